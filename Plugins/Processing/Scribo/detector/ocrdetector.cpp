#include "ocrdetector.h"
