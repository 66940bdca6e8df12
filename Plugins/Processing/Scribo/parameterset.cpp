#include "parameterset.h"
