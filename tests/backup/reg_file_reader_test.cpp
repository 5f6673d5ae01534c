#include <gtest/gtest.h>

TEST(RegFileReader, Placeholder) {}
