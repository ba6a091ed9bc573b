#include "tests/test_support.h"
