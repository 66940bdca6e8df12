#include "posecorrection.h"
