#include "mounttable.h"
