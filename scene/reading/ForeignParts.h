#pragma once

#include "velmarstring.h"

#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/Rotations.h"
#include "scene/SceneNode.h"
#include "scene/SharedShaderInfo.h"
#include "scene/Spectra.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/SceneNodeCamera.h"

#include <cstdint>

/// What a document has from classes of a renderer library: kept as text and written again. Materials, their parameters
/// and nodes take part in passes over files and UIDs, as far as the names of elements say what they are. None has the
/// bytes that the renderer library would look for after its base: a scene with such parts is for reading and writing,
/// not for rendering.

namespace Velmar {

/// The text of an element or of all that is inside one, from its first `<` to its last `>`, with line feeds between.
class ForeignText {
  public:
    /// A code that no class of the renderer library has.
    static constexpr std::uint32_t type = 0xFFFFFFFF;

    explicit ForeignText(std::string_view text_) : text(text_) {}

    /// On lines of its own, the first at `depth` tabs; nothing for an empty text.
    void write(OStream& stream, std::uint32_t depth) const;

    /// An element `path` names a file, and one whose name is `uid` or ends in `_uid` a node.
    void traverse(TraversalState& state);

    String text;
};

class ForeignSpectrum : public Destroyable<ForeignSpectrum, Spectrum> {
  public:
    explicit ForeignSpectrum(std::string_view text_) : content(text_) {}
    void writeXML(OStream& stream, std::uint32_t depth) const override { content.write(stream, depth); }
    std::uint32_t getType() const override { return ForeignText::type; }
    Reference<Spectrum>* cloneInto(Reference<Spectrum>* result) const override;
    void updateHash(XXH64_state_t* state) const override;

    ForeignText content;
};

class ForeignWavelengthDependentParam : public Destroyable<ForeignWavelengthDependentParam, WavelengthDependentParam> {
  public:
    explicit ForeignWavelengthDependentParam(std::string_view text_) : content(text_) {}
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const override {
        content.write(stream, depth);
    }
    std::uint32_t getType() const override { return ForeignText::type; }
    void traverse(TraversalState& state, SceneNode*) override { content.traverse(state); }
    void updateHash(XXH64_state_t* state) const override;
    Reference<WavelengthDependentParam>* cloneInto(Reference<WavelengthDependentParam>* result) const override;

    ForeignText content;
};

class ForeignSurfaceParam : public Destroyable<ForeignSurfaceParam, SurfaceParam> {
  public:
    explicit ForeignSurfaceParam(std::string_view text_) : content(text_) {}
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const override {
        content.write(stream, depth);
    }
    std::uint32_t getType() const override { return ForeignText::type; }
    void traverse(TraversalState& state, SceneNode*) override { content.traverse(state); }
    void reservedSlot4() override {}
    void updateHash(XXH64_state_t* state) const override;

    ForeignText content;
};

class ForeignRotation : public Destroyable<ForeignRotation, Rotation> {
  public:
    explicit ForeignRotation(std::string_view text_) : content(text_) {}
    void writeXML(OStream& stream, std::uint32_t depth) const override { content.write(stream, depth); }
    std::uint32_t getType() const override { return ForeignText::type; }
    Reference<Rotation>* cloneInto(Reference<Rotation>* result) const override;
    void updateHash(XXH64_state_t* state) const override;
    bool isIdentity() const override { return false; }

    ForeignText content;
};

class ForeignTexCoordGeneration : public Destroyable<ForeignTexCoordGeneration, TexCoordGeneration> {
  public:
    explicit ForeignTexCoordGeneration(std::string_view text_) : content(text_) {}
    void writeXML(OStream& stream, std::uint32_t depth) const override { content.write(stream, depth); }
    std::uint32_t getType() const override { return ForeignText::type; }

    ForeignText content;
};

class ForeignShaderParameter : public Destroyable<ForeignShaderParameter, ShaderParameter> {
  public:
    explicit ForeignShaderParameter(std::string_view text_) : content(text_) {}
    void reservedSlot1() override {}
    void reservedSlot2() override {}
    void writeXML(OStream& stream, std::uint32_t depth) const override { content.write(stream, depth); }

    ForeignText content;
};

class ForeignApertureShape : public Destroyable<ForeignApertureShape, ApertureShape> {
  public:
    explicit ForeignApertureShape(std::string_view text_) : content(text_) {}
    std::int32_t getType() const override { return static_cast<std::int32_t>(ForeignText::type); }
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const override {
        content.write(stream, depth);
    }
    Reference<ApertureShape>* cloneInto(Reference<ApertureShape>* result) const override;

    ForeignText content;
};

class ForeignSplatFilter : public Destroyable<ForeignSplatFilter, SplatFilter> {
  public:
    explicit ForeignSplatFilter(std::string_view text_) : content(text_) {}
    std::int32_t getType() const override { return static_cast<std::int32_t>(ForeignText::type); }
    void writeXML(OStream& stream, std::uint32_t depth) const override { content.write(stream, depth); }
    Reference<SplatFilter>* cloneInto(Reference<SplatFilter>* result) const override;

    ForeignText content;
};

class ForeignDownsizeFilter : public Destroyable<ForeignDownsizeFilter, DownsizeFilter> {
  public:
    explicit ForeignDownsizeFilter(std::string_view text_) : content(text_) {}
    std::int32_t getType() const override { return static_cast<std::int32_t>(ForeignText::type); }
    void writeXML(OStream& stream, std::uint32_t depth) const override { content.write(stream, depth); }
    Reference<DownsizeFilter>* cloneInto(Reference<DownsizeFilter>* result) const override;

    ForeignText content;
};

/// A material of another kind. Its element is kept with everything inside.
class ForeignMaterial : public Destroyable<ForeignMaterial, Material> {
  public:
    ForeignMaterial(std::string_view element_, std::string_view text_) : element(element_), content(text_) {}

    String* getTypeNameInto(String* result) const override;
    std::uint32_t getMaterialKind() const override { return ForeignText::type; }
    void traverseFields(TraversalState& state, SceneNode*) override { content.traverse(state); }
    void updateHash(XXH64_state_t* state) const override;
    bool hasDisplacement() const override { return false; }
    void writeFieldsXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const override {
        content.write(stream, depth + 1);
    }

    String element;
    ForeignText content;
};

/// A node of another kind. Its UID and its name are known, the rest of its element is kept.
class ForeignNode : public Destroyable<ForeignNode, PlainSceneNode> {
  public:
    ForeignNode(NodeType node_type, std::string_view element_, std::string_view text)
        : Destroyable(node_type), element(element_), content(text) {}

    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    void traverse(TraversalState& state) override;

    /// First, because a material that is bound to a scatter node writes its UID here.
    UID owner_uid = invalid_uid;
    String element;
    ForeignText content;
};

static_assert(offsetof(ForeignNode, owner_uid) == sizeof(SceneNode));

/// A scatter node that a document only refers to. It writes nothing, and is small: there may be very many.
class MissingNode : public Destroyable<MissingNode, PlainSceneNode> {
  public:
    explicit MissingNode(UID own_uid) : Destroyable(NodeType::Scatter) { uid = own_uid; }

    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    void writeXML(OStream&, std::uint32_t, const XMLWriteOptions&) const override {}

    /// As in `ForeignNode`.
    UID owner_uid = invalid_uid;
};

static_assert(offsetof(MissingNode, owner_uid) == sizeof(SceneNode));

/// Takes the parts of a node that have text in which passes look for paths and UIDs, but are of classes without a slot
/// for passes, through one: aperture shapes and the parameters of shader programs. To be called beside `traverse`.
void traverseForeignParts(SceneNode& node, TraversalState& state);

} // namespace Velmar
