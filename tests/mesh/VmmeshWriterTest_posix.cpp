#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/VmmeshFile.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/Throws.h"

#include <gtest/gtest.h>

using namespace Velmar;
using TestSupport::messageOf;

namespace {

TEST(VmmeshWriter, ReportsAFullDiskForFewAndForManyBytes) {
    Mesh small;
    addUnitSquare(small);
    Mesh large;
    for (int i = 0; i < 100000; ++i)
        large.addVertex({static_cast<float>(i), 0, 0});
    for (const Mesh* mesh : {&small, &large})
        for (const bool use_compression : {false, true})
            EXPECT_EQ(messageOf<VelmarException>([&] { writeToFile("/dev/full", *mesh, use_compression); }),
                      "Error while writing to '/dev/full'.");
}

} // namespace
