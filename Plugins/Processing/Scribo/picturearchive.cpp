#include "picturearchive.h"
