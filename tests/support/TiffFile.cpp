#include "support/TiffFile.h"
