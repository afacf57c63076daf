#include "tests/models/PackagedModels.h"

#include "tests/support/FileBytes.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>
#include <string>

/// One line for each file: vertices, triangles and materials, or the message.
TEST(PackagedModels, GiveAMeshOrAMessageEach) {
    std::string found;
    for (const std::string& file : Models::files()) {
        const Models::Outcome outcome = Models::readOurs(file);
        found += file + ": ";
        if (outcome.message.empty())
            found += std::to_string(outcome.vertices) + " vertices, " + std::to_string(outcome.triangles) +
                     " triangles, " + std::to_string(outcome.materials) + " materials\n";
        else
            found += outcome.message + "\n";
    }
    EXPECT_EQ(found, TestSupport::readFileBytes(VELMAR_TEST_DATA "/golden/packaged_models.txt"));
}
