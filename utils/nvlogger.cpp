#include "nvlogger.h"
