// Included ahead of every test; its headers are guarded themselves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "../../src/pch/model.h"
