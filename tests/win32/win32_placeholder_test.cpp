#include <gtest/gtest.h>

TEST(Win32, Placeholder) {}
