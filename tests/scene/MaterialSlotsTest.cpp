#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/Rotations.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/Spectra.h"
#include "tests/support/FakeParams.h"
#include "tests/support/MemoryOStream.h"
#include "tests/support/PlainNode.h"
#include "tests/support/Slots.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>

namespace MaterialSlotsTests {

/// The renderer library calls these objects by position.

using namespace Velmar;
using namespace TestSupport;

namespace {

/// What a slot constructs in the place it is given, which it must return.
template <class T, class Call>
T constructedBy(Call call) {
    alignas(T) std::byte place[sizeof(T)];
    T* const made = call(reinterpret_cast<T*>(place));
    EXPECT_EQ(static_cast<void*>(made), static_cast<void*>(place));
    T result(*made);
    made->~T();
    return result;
}

std::uint64_t hashThroughSlot(void* object, std::size_t slot) {
    XXH64_state_t* const state = XXH64_createState();
    XXH64_reset(state, 1);
    callSlot<void, XXH64_state_t*>(object, slot, state);
    const std::uint64_t hash = XXH64_digest(state);
    XXH64_freeState(state);
    return hash;
}

std::string textThroughSlot1(void* object) {
    return textOf([&](OStream& stream) { callSlot<void, OStream&, std::uint32_t>(object, 1, stream, 0); });
}

} // namespace

TEST(SpectrumSlots, AreInOrder) {
    const double value = 0.5;
    auto* const spectrum = new UniformSpectrum(value);
    EXPECT_EQ(textThroughSlot1(spectrum), "<uniform>\n\t<value>0.5</value>\n</uniform>\n");
    EXPECT_EQ(callSlot<std::uint32_t>(spectrum, 2), 4u);
    using Copy = Reference<Spectrum>;
    const Copy copy = constructedBy<Copy>([&](Copy* place) { return callSlot<Copy*, Copy*>(spectrum, 3, place); });
    EXPECT_EQ(copy->getType(), 4u);
    EXPECT_EQ(hashThroughSlot(spectrum, 4), XXH64(&value, sizeof value, 1));
    EXPECT_EQ((callSlot<void*, unsigned>(spectrum, 0, 1)), spectrum);
}

TEST(RotationSlots, AreInOrder) {
    auto* const rotation = new MatrixRotation;
    EXPECT_EQ(textThroughSlot1(rotation), "<matrix>\n\t1 0 0 0 1 0 0 0 1 \n</matrix>\n");
    EXPECT_EQ(callSlot<std::uint32_t>(rotation, 2), 0u);
    using Copy = Reference<Rotation>;
    const Copy copy = constructedBy<Copy>([&](Copy* place) { return callSlot<Copy*, Copy*>(rotation, 3, place); });
    EXPECT_TRUE(copy->isIdentity());
    EXPECT_EQ(hashThroughSlot(rotation, 4), XXH64(rotation->matrix, sizeof rotation->matrix, 1));
    EXPECT_TRUE(callSlot<bool>(rotation, 5));
    callSlot<void*, unsigned>(rotation, 0, 1);
}

TEST(WavelengthDependentParamSlots, AreInOrder) {
    std::string visits;
    auto* const param = new FakeWavelengthParam("w", &visits);
    const XMLWriteOptions options{};
    EXPECT_EQ(textOf([&](OStream& stream) {
                  callSlot<void, OStream&, std::uint32_t, const XMLWriteOptions&>(param, 1, stream, 0, options);
              }),
              "<w/>\n");
    EXPECT_EQ(callSlot<std::uint32_t>(param, 2), 1u);
    TraversalState state(TraversalKind::GetBounds, "", "");
    callSlot<void, TraversalState&, SceneNode*>(param, 3, state, nullptr);
    EXPECT_EQ(visits, "w ");
    EXPECT_EQ(hashThroughSlot(param, 4), XXH64("w", 1, 1));
    using Copy = Reference<WavelengthDependentParam>;
    const Copy copy = constructedBy<Copy>([&](Copy* place) { return callSlot<Copy*, Copy*>(param, 5, place); });
    EXPECT_EQ(copy->getType(), 1u);
    callSlot<void*, unsigned>(param, 0, 1);
}

TEST(SurfaceParamSlots, HaveTheirHashInSlot5) {
    std::string visits;
    auto* const param = new FakeSurfaceParam("s", &visits);
    EXPECT_EQ(callSlot<std::uint32_t>(param, 2), 0u);
    TraversalState state(TraversalKind::GetBounds, "", "");
    callSlot<void, TraversalState&, SceneNode*>(param, 3, state, nullptr);
    EXPECT_EQ(visits, "s ");
    EXPECT_EQ(hashThroughSlot(param, 5), XXH64("s", 1, 1));
    callSlot<void*, unsigned>(param, 0, 1);
}

TEST(ShaderParameterSlots, HaveTheirWriterInSlot3) {
    auto* const parameter = new FakeShaderParameter;
    EXPECT_EQ(textOf([&](OStream& stream) { callSlot<void, OStream&, std::uint32_t>(parameter, 3, stream, 0); }),
              "<parameter/>\n");
    callSlot<void*, unsigned>(parameter, 0, 1);
}

TEST(TexCoordGenerationSlots, AreInOrder) {
    auto* const generation = new FakeTexCoord({2, 0, 0, 1, 0, 0}, 7);
    EXPECT_EQ(textThroughSlot1(generation), "<first>2</first>\n");
    EXPECT_EQ(callSlot<std::uint32_t>(generation, 2), 7u);
    callSlot<void*, unsigned>(generation, 0, 1);
}

TEST(MaterialSlots, AreInOrder) {
    auto* const material = new FakeMaterial(6);
    const Reference<PlainNode> node(new PlainNode);
    node->setUID(9);
    material->references[2] = node.getPointer();

    EXPECT_EQ(constructedBy<String>([&](String* place) { return callSlot<String*, String*>(material, 1, place); }),
              "stand_in");
    EXPECT_EQ(callSlot<std::uint32_t>(material, 2), 6u);
    EXPECT_EQ(callSlot<std::uint32_t>(material, 3), 0u);
    TraversalState state(TraversalKind::GetBounds, "", "");
    callSlot<void, TraversalState&, SceneNode*>(material, 4, state, node.getPointer());
    EXPECT_EQ(material->last_owner, node.getPointer());
    EXPECT_TRUE((callSlot<bool, const SceneNode*>(material, 5, node.getPointer())));
    using UIDs = Vector<UID>;
    const UIDs uids = constructedBy<UIDs>([&](UIDs* place) { return callSlot<UIDs*, UIDs*>(material, 6, place); });
    ASSERT_EQ(uids.size(), 1u);
    EXPECT_EQ(uids[0], 9u);
    callSlot<void*, unsigned>(material, 0, 1);
    EXPECT_EQ(node->getRefCount(), 1);
}

TEST(MaterialSlots, HashDisplacementAndFieldsComeLast) {
    auto* const material = new DiffuseMaterial;
    material->displacement = new FakeSurfaceParam("d");
    EXPECT_EQ(hashThroughSlot(material, 7), XXH64("d", 1, 1));
    EXPECT_TRUE(callSlot<bool>(material, 8));
    const XMLWriteOptions options{};
    EXPECT_EQ(textOf([&](OStream& stream) {
                  callSlot<void, OStream&, std::uint32_t, const XMLWriteOptions&>(material, 9, stream, 0, options);
              }),
              "\t<displacement>\n\t\t<d/>\n\t</displacement>\n");
    callSlot<void*, unsigned>(material, 0, 1);
}

TEST(SceneNodeSlots, AreInOrder) {
    auto* const node = new SceneNodeMaterial;
    const String name = "Wood";
    callSlot<void, const String&>(node, 1, name);
    EXPECT_EQ(callSlot<const String&>(node, 2), name);
    EXPECT_TRUE((callSlot<bool, const SceneNode*>(node, 3, node)));
    using Copy = Reference<SceneNode>;
    const Copy copy = constructedBy<Copy>([&](Copy* place) { return callSlot<Copy*, Copy*>(node, 4, place); });
    EXPECT_EQ(copy->getName(), name);
    const NodeUIDMap map;
    callSlot<void, const NodeUIDMap&>(node, 5, map);
    XMLWriteOptions options;
    options.write_material_uids = false;
    EXPECT_EQ(textOf([&](OStream& stream) {
                  callSlot<void, OStream&, std::uint32_t, const XMLWriteOptions&>(node, 6, stream, 0, options);
              }),
              "<material>\n\t<name>Wood</name>\n\t<diffuse>\n\t</diffuse>\n</material>\n");

    TraversalState* const state = callSlot<TraversalState*, TraversalKind, const String&, const String&>(
        node, 8, TraversalKind::OffsetUIDs, name, name);
    state->uid_offset = 2;
    node->setUID(1);
    callSlot<void, TraversalState&>(node, 7, *state);
    EXPECT_EQ(node->getUID(), 3u);
    callSlot<void, TraversalState*>(node, 9, state);

    node->material->layer = 4;
    node->material->mask_name = "mask";
    node->scatter_uids.push_back(8);
    EXPECT_EQ(callSlot<std::uint32_t>(node, 10), 4u);
    MaskNameMap masks;
    callSlot<void, MaskNameMap&>(node, 11, masks);
    EXPECT_EQ(masks.size(), 1u);
    callSlot<void, MaskNameMap&>(node, 12, masks);
    EXPECT_EQ(masks.size(), 1u);
    EXPECT_FALSE((callSlot<bool, const SceneNode*>(node, 13, node)));
    using UIDs = Vector<UID>;
    const UIDs uids = constructedBy<UIDs>([&](UIDs* place) { return callSlot<UIDs*, UIDs*>(node, 14, place); });
    ASSERT_EQ(uids.size(), 1u);
    EXPECT_TRUE((callSlot<bool, const SceneNode*>(node, 15, node)));
    callSlot<void*, unsigned>(node, 0, 1);
}

} // namespace MaterialSlotsTests
