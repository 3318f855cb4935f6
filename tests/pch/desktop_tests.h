// Included ahead of every test that needs the toolkit; its headers are guarded themselves.
#include "../../src/pch/toolkit.h"
#include "tests.h"
