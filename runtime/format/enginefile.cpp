#include "enginefile.h"
