#include "scene/nodes/IESProfile.h"

#include "tests/nodes/ModelSupport.h"
#include "tests/support/Golden.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>
#include <string>

using namespace Velmar;
using namespace TestSupport;

namespace {

std::string profileElement(const IESProfile& profile, const XMLWriteOptions& options = {}) {
    return textOf([&](OStream& stream) { profile.writeXML(stream, 1, options); });
}

TEST(IESProfile, WritesMaterialAndPath) {
    const Reference<IESProfile> profile(new IESProfile);
    profile->path = "lamp.ies";
    profile->material_uid = 3;
    XMLWriteOptions options;
    options.scene_dir = "D:\\work";
    expectGolden(profileElement(*profile, options), "\t<ies_profile>\n"
                                                    "\t\t<material_uid>3</material_uid>\n"
                                                    "\t\t<path>D:\\work\\lamp.ies</path>\n"
                                                    "\t</ies_profile>\n");
}

TEST(IESProfile, MissingMaterialIsWrittenAsTheInvalidUID) {
    EXPECT_NE(profileElement(*Reference<IESProfile>(new IESProfile)).find("<material_uid>4294967295</material_uid>"),
              std::string::npos);
}

TEST(IESProfile, CopyOfABoundRecordSharesTheMaterialAndForgetsNameAndUID) {
    const Reference<IESProfile> profile(new IESProfile);
    profile->material_name = "lamp";
    profile->path = "lamp.ies";
    profile->material = materialNode(8);
    profile->material_uid = 4;
    const Reference<IESProfile> copy = profile->copy();
    EXPECT_EQ(copy->material_name, "");
    EXPECT_EQ(copy->path, "lamp.ies");
    EXPECT_EQ(copy->material.getPointer(), profile->material.getPointer());
    EXPECT_EQ(copy->material_uid, invalid_uid);
    EXPECT_EQ(profileElement(*copy), profileElement(*profile));
}

TEST(IESProfile, CopyOfAnUnboundRecordKeepsTheUID) {
    const Reference<IESProfile> profile(new IESProfile);
    profile->material_uid = 4;
    const Reference<IESProfile> copy = profile->copy();
    EXPECT_EQ(copy->material.getPointer(), nullptr);
    EXPECT_EQ(copy->material_uid, 4u);
}

} // namespace
