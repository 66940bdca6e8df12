#include "resultoverlay.h"
