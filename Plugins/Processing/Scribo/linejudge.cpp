#include "linejudge.h"
