#include "scribo.h"
