#include "tests/kit/Support.h"

extern "C" int32_t kitInC(void);

TEST(KitHeader, IsPlainC) {
    EXPECT_SUCCESS(kitInC());
}
