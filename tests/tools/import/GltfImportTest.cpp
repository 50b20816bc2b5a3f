#include "tests/tools/import/ImportTestSupport.h"
