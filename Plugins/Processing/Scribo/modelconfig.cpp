#include "modelconfig.h"
