#include "paramwrap.h"
