#include "filehandle_internal.h"
