#include "scene/MaterialParams.h"

#include "scene/Spectra.h"
#include "tests/support/Golden.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>

namespace ConstantWavelengthDependentParamTests {

using namespace Velmar;
using TestSupport::expectGolden;
using TestSupport::golden;
using TestSupport::indented;
using TestSupport::innerElement;
using TestSupport::replaced;
using TestSupport::textOf;

namespace {

Reference<WavelengthDependentParam> constant(double value) {
    return new ConstantWavelengthDependentParam(new UniformSpectrum(value));
}

TEST(ConstantWavelengthDependentParam, HoldsItsSpectrumAlone) {
    const auto param = constant(1);
    EXPECT_EQ(static_cast<const ConstantWavelengthDependentParam&>(*param).spectrum->getRefCount(), 1);
}

TEST(ConstantWavelengthDependentParam, WritesTheSpectrumInside) {
    expectGolden(
        textOf([&](OStream& stream) { constant(3)->writeXML(stream, 1, {}); }),
        indented(replaced(innerElement(golden("background/uniform"), "constant"), {{"<value>0<", "<value>3<"}})));
}

TEST(ConstantWavelengthDependentParam, WithoutASpectrumIsAnEmptyElement) {
    const Reference<WavelengthDependentParam> param(new ConstantWavelengthDependentParam(Reference<Spectrum>()));
    expectGolden(textOf([&](OStream& stream) { param->writeXML(stream, 0, {}); }), "<constant>\n</constant>\n");
}

TEST(ConstantWavelengthDependentParam, HasType0) {
    EXPECT_EQ(constant(1)->getType(), 0u);
}

TEST(ConstantWavelengthDependentParam, AddsNothingToAHash) {
    XXH64_state_t* const state = XXH64_createState();
    XXH64_reset(state, 1);
    constant(1)->updateHash(state);
    EXPECT_EQ(XXH64_digest(state), XXH64(nullptr, 0, 1));
    XXH64_freeState(state);
}

TEST(ConstantWavelengthDependentParam, CloneHasASpectrumOfItsOwn) {
    const auto param = constant(7);
    const auto copy = param->clone();
    const auto& spectrum = static_cast<const ConstantWavelengthDependentParam&>(*param).spectrum;
    const auto& copied = static_cast<const ConstantWavelengthDependentParam&>(*copy).spectrum;
    EXPECT_NE(copied.getPointer(), spectrum.getPointer());
    EXPECT_EQ(static_cast<const UniformSpectrum&>(*copied).value, 7);
}

TEST(ConstantWavelengthDependentParamDeathTest, DeletionWhileAReferenceHoldsItIsReported) {
    const auto param = constant(1);
    EXPECT_DEATH(param->destroy(1), "refcount == 0");
}

} // namespace

} // namespace ConstantWavelengthDependentParamTests
