#include "scene/Spectra.h"

#include "tests/support/Golden.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>

namespace SpectrumTests {

using namespace Velmar;
using TestSupport::expectGolden;
using TestSupport::golden;
using TestSupport::indented;
using TestSupport::innerElement;
using TestSupport::replaced;
using TestSupport::textOf;

namespace {

std::uint64_t hashOf(const Spectrum& spectrum) {
    XXH64_state_t* const state = XXH64_createState();
    XXH64_reset(state, 1);
    spectrum.updateHash(state);
    const std::uint64_t hash = XXH64_digest(state);
    XXH64_freeState(state);
    return hash;
}

TEST(UniformSpectrum, WritesItsValue) {
    const Reference<Spectrum> spectrum(new UniformSpectrum(0.25));
    expectGolden(textOf([&](OStream& stream) { spectrum->writeXML(stream, 2); }), "\t\t<uniform>\n"
                                                                                  "\t\t\t<value>0.25</value>\n"
                                                                                  "\t\t</uniform>\n");
}

TEST(UniformSpectrum, HasType4) {
    EXPECT_EQ(Reference<Spectrum>(new UniformSpectrum(1))->getType(), 4u);
}

TEST(UniformSpectrum, ClonesItsValueIntoAnObjectOfItsOwn) {
    const Reference<UniformSpectrum> spectrum(new UniformSpectrum(0.25));
    const Reference<Spectrum> copy = spectrum->clone();
    spectrum->value = 1;
    EXPECT_EQ(static_cast<const UniformSpectrum&>(*copy).value, 0.25);
    EXPECT_EQ(copy->getRefCount(), 1);
}

TEST(UniformSpectrum, HashesTheBytesOfItsValue) {
    const double value = 0.25;
    EXPECT_EQ(hashOf(*Reference<Spectrum>(new UniformSpectrum(value))), XXH64(&value, sizeof value, 1));
}

TEST(UniformSpectrumDeathTest, DeletionWhileAReferenceHoldsItIsReported) {
    const Reference<Spectrum> spectrum(new UniformSpectrum(1));
    EXPECT_DEATH(spectrum->destroy(1), "refcount == 0");
}

TEST(UniformSpectrum, WithoutAHolderIsDeletedByHand) {
    Spectrum* const spectrum = new UniformSpectrum(1);
    EXPECT_EQ(spectrum->getRefCount(), 0);
    EXPECT_EQ(spectrum->destroy(1), spectrum);
}

TEST(RGBSpectrum, InnerElementHasTheNameOfTheOuterOne) {
    const Reference<Spectrum> spectrum(new RGBSpectrum({0.8, 0.5, 0}, 2.2));
    expectGolden(textOf([&](OStream& stream) { spectrum->writeXML(stream, 1); }),
                 indented(replaced(innerElement(golden("material/coloured"), "rgb"), {{"0.9 0.1 0", "0.8 0.5 0"}})));
}

TEST(RGBSpectrum, HasType2) {
    EXPECT_EQ(Reference<Spectrum>(new RGBSpectrum({}, 1))->getType(), 2u);
}

TEST(RGBSpectrum, ClonesColourAndGamma) {
    const Reference<RGBSpectrum> spectrum(new RGBSpectrum({1, 2, 3}, 2.2));
    const Reference<Spectrum> copy = spectrum->clone();
    EXPECT_NE(copy.getPointer(), spectrum.getPointer());
    const auto& rgb = static_cast<const RGBSpectrum&>(*copy);
    EXPECT_EQ(rgb.rgb, (Vec3d{1, 2, 3}));
    EXPECT_EQ(rgb.gamma, 2.2);
}

TEST(RGBSpectrum, HashesTheBytesOfColourThenGamma) {
    const double bytes[4] = {1, 2, 3, 2.2};
    EXPECT_EQ(hashOf(*Reference<Spectrum>(new RGBSpectrum({1, 2, 3}, 2.2))), XXH64(bytes, sizeof bytes, 1));
}

TEST(RGBSpectrumDeathTest, DeletionWhileAReferenceHoldsItIsReported) {
    const Reference<Spectrum> spectrum(new RGBSpectrum({}, 1));
    EXPECT_DEATH(spectrum->destroy(1), "refcount == 0");
}

} // namespace

} // namespace SpectrumTests
