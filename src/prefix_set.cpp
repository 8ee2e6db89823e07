#include "prefix_set.h"
