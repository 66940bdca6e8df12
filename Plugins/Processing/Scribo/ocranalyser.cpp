#include "ocranalyser.h"
