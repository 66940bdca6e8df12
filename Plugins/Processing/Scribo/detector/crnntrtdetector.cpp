#include "crnntrtdetector.h"
