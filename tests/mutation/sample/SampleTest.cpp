#include "Sample.h"

#include <gtest/gtest.h>

// The limit of "fair" is tested on both sides, that of "good" from afar.
TEST(Sample, Fair) {
    EXPECT_EQ(gradeOf(50), "fair");
    EXPECT_EQ(gradeOf(49), "poor");
}

TEST(Sample, Good) {
    EXPECT_EQ(gradeOf(95), "good");
}
