#include "resultrecord.h"
