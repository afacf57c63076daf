#pragma once

#include "scene/Material.h"
#include "scene/Rotations.h"
#include "scene/SceneNode.h"
#include "scene/XMLPrimitives.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

/// Objects like those that the renderer library makes, of the families that have no class on this side.
namespace TestSupport {

/// A bump, displacement or normal map. Its element is empty and bears `element`; its hash is the bytes of `element`.
class FakeSurfaceParam : public Velmar::Destroyable<FakeSurfaceParam, Velmar::SurfaceParam> {
  public:
    explicit FakeSurfaceParam(std::string element_, std::string* visits_ = nullptr)
        : element(std::move(element_)), visits(visits_) {}

    void writeXML(Velmar::OStream& stream, std::uint32_t depth, const Velmar::XMLWriteOptions&) const override {
        Velmar::writeEmptyTag(stream, depth, element);
    }
    std::uint32_t getType() const override { return 0; }
    void traverse(Velmar::TraversalState&, Velmar::SceneNode*) override {
        if (visits != nullptr) *visits += element + ' ';
    }
    void reservedSlot4() override { ADD_FAILURE() << "slot 4 was called"; }
    void updateHash(XXH64_state_t* state) const override { XXH64_update(state, element.data(), element.size()); }

    std::string element;
    std::string* visits;
};

/// As `FakeSurfaceParam`, of the other family.
class FakeWavelengthParam : public Velmar::Destroyable<FakeWavelengthParam, Velmar::WavelengthDependentParam> {
  public:
    explicit FakeWavelengthParam(std::string element_, std::string* visits_ = nullptr)
        : element(std::move(element_)), visits(visits_) {}

    void writeXML(Velmar::OStream& stream, std::uint32_t depth, const Velmar::XMLWriteOptions&) const override {
        Velmar::writeEmptyTag(stream, depth, element);
    }
    std::uint32_t getType() const override { return 1; }
    void traverse(Velmar::TraversalState&, Velmar::SceneNode*) override {
        if (visits != nullptr) *visits += element + ' ';
    }
    void updateHash(XXH64_state_t* state) const override { XXH64_update(state, element.data(), element.size()); }
    Velmar::Reference<Velmar::WavelengthDependentParam>*
    cloneInto(Velmar::Reference<Velmar::WavelengthDependentParam>* result) const override {
        using Result = Velmar::Reference<Velmar::WavelengthDependentParam>;
        return new (static_cast<void*>(result)) Result(new FakeWavelengthParam(element));
    }

    std::string element;
    std::string* visits;
};

/// A parameter that reads a texture: the record is directly after the base.
class FakeTexturedParam : public Velmar::Destroyable<FakeTexturedParam, Velmar::WavelengthDependentParam> {
  public:
    void writeXML(Velmar::OStream& stream, std::uint32_t depth, const Velmar::XMLWriteOptions&) const override {
        Velmar::writeEmptyTag(stream, depth, "textured");
    }
    std::uint32_t getType() const override { return 2; }
    void traverse(Velmar::TraversalState&, Velmar::SceneNode*) override {}
    void updateHash(XXH64_state_t*) const override {}
    Velmar::Reference<Velmar::WavelengthDependentParam>*
    cloneInto(Velmar::Reference<Velmar::WavelengthDependentParam>* result) const override {
        return new (static_cast<void*>(result)) Velmar::Reference<Velmar::WavelengthDependentParam>();
    }

    Velmar::Texture texture;
};
static_assert(offsetof(FakeTexturedParam, texture) == 16);

/// A normal map, or with another `type` a bump map, that reads a texture.
class FakeTexturedSurfaceParam : public Velmar::Destroyable<FakeTexturedSurfaceParam, Velmar::SurfaceParam> {
  public:
    explicit FakeTexturedSurfaceParam(std::uint32_t type_) : type(type_) {}

    void writeXML(Velmar::OStream& stream, std::uint32_t depth, const Velmar::XMLWriteOptions&) const override {
        Velmar::writeEmptyTag(stream, depth, "textured");
    }
    std::uint32_t getType() const override { return type; }
    void traverse(Velmar::TraversalState&, Velmar::SceneNode*) override {}
    void reservedSlot4() override {}
    void updateHash(XXH64_state_t*) const override {}

    Velmar::Texture texture;
    std::uint32_t type;
};
static_assert(offsetof(FakeTexturedSurfaceParam, texture) == 16);

/// Texture coordinates by an affine map, or with another `type` in some other way.
class FakeTexCoord : public Velmar::Destroyable<FakeTexCoord, Velmar::TexCoordGeneration> {
  public:
    explicit FakeTexCoord(std::array<double, 6> values_, std::uint32_t type_ = affine_kind)
        : values(values_), type(type_) {}

    void writeXML(Velmar::OStream& stream, std::uint32_t depth) const override {
        Velmar::writeDoubleElement(stream, depth, "first", values[0]);
    }
    std::uint32_t getType() const override { return type; }

    std::array<double, 6> values;
    std::uint32_t type;
};
static_assert(offsetof(FakeTexCoord, values) == 16);

class FakeShaderParameter : public Velmar::Destroyable<FakeShaderParameter, Velmar::ShaderParameter> {
  public:
    void reservedSlot1() override { ADD_FAILURE() << "slot 1 was called"; }
    void reservedSlot2() override { ADD_FAILURE() << "slot 2 was called"; }
    void writeXML(Velmar::OStream& stream, std::uint32_t depth) const override {
        Velmar::writeEmptyTag(stream, depth, "parameter");
    }
};

/// A rotation by an axis and an angle, or with another `type` one that nobody knows.
class FakeAxisAngle : public Velmar::Destroyable<FakeAxisAngle, Velmar::Rotation> {
  public:
    explicit FakeAxisAngle(std::uint32_t type_ = axis_and_angle_kind) : type(type_) {}

    void writeXML(Velmar::OStream& stream, std::uint32_t depth) const override {
        Velmar::writeEmptyTag(stream, depth, "axis_angle");
    }
    std::uint32_t getType() const override { return type; }
    Velmar::Reference<Velmar::Rotation>* cloneInto(Velmar::Reference<Velmar::Rotation>* result) const override {
        return new (static_cast<void*>(result)) Velmar::Reference<Velmar::Rotation>();
    }
    void updateHash(XXH64_state_t*) const override {}
    bool isIdentity() const override { return false; }

    double axis[3] = {0, 0, 1};
    double angle = 0;
    std::uint32_t type;
};
static_assert(offsetof(FakeAxisAngle, axis) == 16);

/// A material with node references of its own, which are directly after the base. It can visit another node in a pass.
class FakeMaterial : public Velmar::Destroyable<FakeMaterial, Velmar::Material> {
  public:
    explicit FakeMaterial(std::uint32_t kind_ = 0) : kind(kind_) {}
    ~FakeMaterial() {
        if (destructions != nullptr) ++*destructions;
    }

    Velmar::String* getTypeNameInto(Velmar::String* result) const override {
        return new (static_cast<void*>(result)) Velmar::String("stand_in");
    }
    std::uint32_t getMaterialKind() const override { return kind; }
    void traverseFields(Velmar::TraversalState& state, Velmar::SceneNode* owner) override {
        last_owner = owner;
        if (visited_in_a_pass != nullptr) visited_in_a_pass->traverse(state);
    }
    bool refersToNode(const Velmar::SceneNode* node) const override {
        return std::any_of(std::begin(references), std::end(references),
                           [&](const auto& reference) { return reference.getPointer() == node; });
    }
    Velmar::Vector<Velmar::UID>* getDependencyUIDsInto(Velmar::Vector<Velmar::UID>* result) const override {
        Velmar::Vector<Velmar::UID> uids;
        for (const auto& reference : references)
            if (reference) uids.push_back(reference->getUID());
        return new (static_cast<void*>(result)) Velmar::Vector<Velmar::UID>(uids);
    }
    void updateHash(XXH64_state_t*) const override {}
    bool hasDisplacement() const override { return false; }
    void writeFieldsXML(Velmar::OStream&, std::uint32_t, const Velmar::XMLWriteOptions&) const override {}

    Velmar::Reference<Velmar::SceneNode> references[3];
    std::uint32_t kind;
    Velmar::SceneNode* visited_in_a_pass = nullptr;
    Velmar::SceneNode* last_owner = nullptr;
    /// Counts the object's end, unless it is null.
    int* destructions = nullptr;
};
static_assert(offsetof(FakeMaterial, references) == 160);

/// A scatter node: it begins with the UID of the material node that it is bound to.
class FakeScatter : public Velmar::Destroyable<FakeScatter, Velmar::PlainSceneNode> {
  public:
    FakeScatter() : Destroyable(Velmar::NodeType::Scatter) {}

    Velmar::Reference<Velmar::SceneNode>* cloneInto(Velmar::Reference<Velmar::SceneNode>* result) const override {
        return new (static_cast<void*>(result)) Velmar::Reference<Velmar::SceneNode>();
    }
    void writeXML(Velmar::OStream&, std::uint32_t, const Velmar::XMLWriteOptions&) const override {}
    Velmar::Vector<Velmar::UID>* getDependencyUIDsInto(Velmar::Vector<Velmar::UID>* result) const override {
        return new (static_cast<void*>(result)) Velmar::Vector<Velmar::UID>(dependencies);
    }

    Velmar::UID owner_uid = Velmar::invalid_uid;
    Velmar::Vector<Velmar::UID> dependencies;
};
static_assert(offsetof(FakeScatter, owner_uid) == 96);

template <class T>
Velmar::Vector<T> vectorOf(std::initializer_list<T> elements) {
    Velmar::Vector<T> vector;
    for (const T& element : elements)
        vector.push_back(element);
    return vector;
}

} // namespace TestSupport
