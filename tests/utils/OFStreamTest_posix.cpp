#include "velmarstring.h"

#include "utils/OFStream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

TEST(OFStream, AFullDiskShowsInTheState) {
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "there is no /dev/full here";
    Velmar::OFStream stream(Velmar::String("/dev/full"));
    ASSERT_FALSE(stream.failed());
    stream.write("buffered");
    EXPECT_FALSE(stream.failed());
    stream.flush();
    EXPECT_TRUE(stream.failed());
}

TEST(OFStream, AFullDiskShowsWhileWritingMoreThanTheBuffer) {
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "there is no /dev/full here";
    Velmar::OFStream stream(Velmar::String("/dev/full"));
    const Velmar::String block(200000, 'x');
    stream.write(block);
    stream.write(block);
    EXPECT_TRUE(stream.failed());
}
