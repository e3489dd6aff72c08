#include <bxbase/bxbase.h>
#include <gtest/gtest.h>
TEST(Smoke, Version) { EXPECT_STREQ(BxGetVersionString(), "0.1.0"); }
