#include "otherplugin.h"
