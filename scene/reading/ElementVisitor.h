#pragma once

#include "scene/nodes/NodeElements.h"
#include "scene/reading/ForeignParts.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Velmar {

/// Passes on the values of a scene that was read, in the order in which they are written, with the names of their
/// elements. It visits the same descriptions as `ElementWriter`. Unlike the writer it also passes on values that a
/// document leaves out because readers assume them.
///
/// `Sink` has these functions, none of them virtual. `index` counts elements of one name from 1; it is 0 where there is
/// only one.
///
///     void enter(std::string_view element, std::size_t index); // the values that follow are inside this element
///     void leave();
///     void flag(std::string_view element, bool value);
///     void numbers(std::string_view element, std::span<const double> values);
///     void numbers(std::string_view element, std::span<const float> values);
///     void text(std::string_view element, std::string_view value, std::size_t index);
///     void markup(std::string_view element, std::string_view elements, std::size_t index); // of the renderer library
///     void file(std::string_view element, std::string_view path);
///     void reference(std::string_view element, const SceneNode* node, UID uid, std::size_t index); // null: not bound
///
/// Markup without a name is all that is in the element entered last.
template <class Sink>
class ElementVisitor {
  public:
    static constexpr bool reads = false;
    static constexpr bool writes = false;

    explicit ElementVisitor(Sink& sink_) : sink(sink_) {}

    static bool has(std::string_view, bool written) { return written; }

    /// A UID names a node and is no value of its.
    void identity(const SceneNode& node) { name(node); }
    void name(const SceneNode& node) { sink.text("name", node.getName().view(), 0); }
    static void materialUID(const SceneNode&) {}

    void value(std::string_view element, bool field) { sink.flag(element, field); }
    void value(std::string_view element, std::int32_t field) { number(element, field); }
    void value(std::string_view element, std::uint32_t field) { number(element, field); }
    void value(std::string_view element, double field) { number(element, field); }
    void value(std::string_view element, const Vec3d& field) {
        const double xyz[] = {field.x, field.y, field.z};
        sink.numbers(element, std::span<const double>(xyz));
    }
    void value(std::string_view element, const String& field) { sink.text(element, field.view(), 0); }
    void value(std::string_view element, const double (&field)[9]) {
        sink.numbers(element, std::span<const double>(field));
    }

    template <class Field>
    void required(std::string_view element, const Field& field) {
        value(element, field);
    }
    template <class Field>
    void valueIf(bool, std::string_view element, const Field& field, const std::type_identity_t<Field>&) {
        value(element, field);
    }
    template <class Field>
    void valueOr(std::string_view element, const Field& field, const std::type_identity_t<Field>&) {
        value(element, field);
    }
    void signedValue(std::string_view element, std::uint32_t field) {
        value(element, static_cast<std::int32_t>(field));
    }
    void signedValueOr(std::string_view element, std::uint32_t field, std::uint32_t) { signedValue(element, field); }
    template <class Field>
    void option(std::string_view element, const Field& field, bool is_set) {
        if (is_set) value(element, field);
    }
    void flag(std::string_view element, bool field) { sink.flag(element, field); }
    void path(std::string_view element, const String& field) { sink.file(element, field.view()); }
    void requiredPath(std::string_view element, const String& field) { path(element, field); }
    void word(std::string_view element, std::uint32_t code, std::span<const std::string_view> words) {
        sink.text(element, code < words.size() ? words[code] : std::string_view(), 0);
    }
    void verbatim(std::string_view element, const String& field) { sink.text(element, field.view(), 0); }
    void numbers(std::string_view element, const Vector<float>& field) {
        sink.numbers(element, std::span<const float>(field.data(), field.size()));
    }

    template <class Node>
    void reference(std::string_view element, const Reference<Node>& node, UID unbound) {
        sink.reference(element, node.getPointer(), node ? node->getUID() : unbound, 0);
    }
    template <class Node>
    void references(std::string_view group_element, std::string_view element, const Vector<Reference<Node>>& nodes,
                    const Vector<UID>&) {
        sink.enter(group_element, 0);
        for (std::size_t i = 0; i < nodes.size(); ++i)
            sink.reference(element, nodes[i].getPointer(), nodes[i] ? nodes[i]->getUID() : invalid_uid, i + 1);
        sink.leave();
    }
    template <class Node>
    void boundReferences(std::string_view group_element, std::string_view element, const Vector<Node*>& nodes,
                         const Vector<UID>&) {
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            sink.enter(group_element, i + 1);
            sink.reference(element, nodes[i], nodes[i]->getUID(), 0);
            sink.leave();
        }
    }

    static bool variant(std::string_view, std::uint32_t code, std::uint32_t own_code) { return code == own_code; }
    static void noVariant(std::uint32_t) {}

    template <class Describe>
    void group(std::string_view element, Describe describeContent) {
        sink.enter(element, 0);
        describeContent(*this);
        sink.leave();
    }
    template <class Object>
    void record(std::string_view element, const Reference<Object>& object) {
        if (object) describeInside(element, 0, *object);
    }
    template <class Object>
    void records(std::string_view element, const Vector<Reference<Object>>& objects) {
        for (std::size_t i = 0; i < objects.size(); ++i)
            describeInside(element, i + 1, *objects[i]);
    }
    template <class Object>
    void list(std::string_view element, const Vector<Object>& objects) {
        for (std::size_t i = 0; i < objects.size(); ++i)
            describeInside(element, i + 1, objects[i]);
    }
    void list(std::string_view element, const Vector<String>& texts) {
        for (std::size_t i = 0; i < texts.size(); ++i)
            sink.text(element, texts[i].view(), i + 1);
    }

    // The classes of the objects are those that the reader makes.
    void part(const Reference<Spectrum>& part) { anyOf<ForeignSpectrum, UniformSpectrum, RGBSpectrum>(part); }
    void part(const Reference<WavelengthDependentParam>& part) {
        anyOf<ForeignWavelengthDependentParam, ConstantWavelengthDependentParam>(part);
    }
    void part(const Reference<SurfaceParam>& part) { visitForeign<ForeignSurfaceParam>(part); }
    void part(const Reference<TexCoordGeneration>& part) { visitForeign<ForeignTexCoordGeneration>(part); }
    void part(const Reference<Rotation>& part) {
        if (!visitForeign<ForeignRotation>(part)) describeWhole(*this, static_cast<const MatrixRotation&>(*part));
    }
    void part(const Reference<ApertureShape>& part) { family<ForeignApertureShape, ApertureCircular>(part); }
    void part(const Reference<SplatFilter>& part) { family<ForeignSplatFilter, SplatFilterFastBox>(part); }
    void part(const Reference<DownsizeFilter>& part) { family<ForeignDownsizeFilter, DownsizeFilterMNCubic>(part); }
    void part(const Reference<WhitePoint>& part) {
        if (!part) return;
        const double xy[] = {part->x, part->y};
        sink.numbers(element_of<WhitePoint>, std::span<const double>(xy));
    }
    void part(const Reference<SharedShaderInfo>& part) { record(element_of<SharedShaderInfo>, part); }
    void part(const Reference<Material>& part) {
        if (!part) return;
        const Material& material = *part;
        if (const auto* const foreign = dynamic_cast<const ForeignMaterial*>(&material))
            sink.markup(foreign->element.view(), foreign->content.text.view(), 0);
        else if (!visitMaterial<DiffuseMaterial>(part))
            visitMaterial<SunSkyMaterial>(part);
        describeSettings(*this, material);
    }
    void parts(const Vector<Reference<ShaderParameter>>& parts) {
        for (std::size_t i = 0; i < parts.size(); ++i)
            sink.markup("parameter", static_cast<const ForeignShaderParameter&>(*parts[i]).content.text.view(), i + 1);
    }
    void node(const Reference<SceneNodeCurve1D>& node) {
        describeInside(element_of<SceneNodeCurve1D>, ++curve_count, *node);
    }
    void kind(std::string_view element) { sink.text({}, element, 0); }

  private:
    void number(std::string_view element, double field) { sink.numbers(element, std::span<const double>(&field, 1)); }

    template <class Object>
    void describeInside(std::string_view element, std::size_t index, const Object& object) {
        sink.enter(element, index);
        describe(*this, object);
        sink.leave();
    }

    /// Also true for null, which has no values.
    template <class Foreign, class Base>
    bool visitForeign(const Reference<Base>& part) {
        if (!part) return true;
        const auto* const foreign = dynamic_cast<const Foreign*>(part.getPointer());
        if (foreign != nullptr) sink.markup({}, foreign->content.text.view(), 0);
        return foreign != nullptr;
    }

    template <class Object, class Base>
    bool visitKind(const Base& part) {
        const auto* const object = dynamic_cast<const Object*>(&part);
        if (object != nullptr) describeInside(element_of<Object>, 0, *object);
        return object != nullptr;
    }

    template <class Foreign, class... Known, class Base>
    void anyOf(const Reference<Base>& part) {
        if (!visitForeign<Foreign>(part)) (visitKind<Known>(*part) || ...);
    }

    /// A part whose element names the family, with one inside that names the class.
    template <class Foreign, class Known, class Base>
    void family(const Reference<Base>& part) {
        if (!part) return;
        if (const auto* const foreign = dynamic_cast<const Foreign*>(part.getPointer()))
            sink.markup(element_of<Known>, foreign->content.text.view(), 0);
        else
            describeWhole(*this, static_cast<const Known&>(*part));
    }

    template <class Object>
    bool visitMaterial(const Reference<Material>& part) {
        const auto* const object = dynamic_cast<const Object*>(part.getPointer());
        if (object == nullptr) return false;
        sink.enter(element_of<Object>, 0);
        describeShader(*this, *object);
        describe(*this, *object);
        sink.leave();
        return true;
    }

    Sink& sink;
    /// Four of one name follow each other.
    std::size_t curve_count = 0;
};

/// Whether the reader keeps nodes of this kind as text.
constexpr bool isForeign(NodeType type) {
    switch (type) {
    case NodeType::Camera:
    case NodeType::RenderSettings:
    case NodeType::Material:
    case NodeType::Mesh:
    case NodeType::Object:
    case NodeType::Sphere:
    case NodeType::ToneMapping:
    case NodeType::BackgroundSettings:
    case NodeType::Curve1D:
        return false;
    default:
        return true;
    }
}

/// Whether a node isn't in the document, which only refers to it: the reader added it.
inline bool isMissingScatter(const SceneNode& node) {
    return node.getType() == NodeType::Scatter && dynamic_cast<const MissingNode*>(&node) != nullptr;
}
inline bool isMissing(const SceneNode& node) {
    return node.getParent() == nullptr || isMissingScatter(node);
}

/// The name of the element of a node that was read; empty for a missing one.
inline std::string_view getElement(const SceneNode& node) {
    switch (node.getType()) {
    case NodeType::Camera:
        return element_of<SceneNodeCamera>;
    case NodeType::RenderSettings:
        return element_of<SceneNodeRenderSettings>;
    case NodeType::Material:
        return element_of<SceneNodeMaterial>;
    case NodeType::Mesh:
        return element_of<SceneNodeMesh>;
    case NodeType::Object:
        return element_of<SceneNodeModel>;
    case NodeType::Sphere:
        return element_of<SceneNodeSphere>;
    case NodeType::ToneMapping:
        return element_of<SceneNodeTonemapping>;
    case NodeType::BackgroundSettings:
        return element_of<SceneNodeBackgroundSettings>;
    case NodeType::Curve1D:
        return element_of<SceneNodeCurve1D>;
    default:
        return isMissingScatter(node) ? std::string_view() : static_cast<const ForeignNode&>(node).element.view();
    }
}

/// Passes the values of a node that was read and isn't missing to `sink`.
template <class Sink>
void visitNode(Sink& sink, const SceneNode& node) {
    ElementVisitor<Sink> visitor(sink);
    switch (node.getType()) {
    case NodeType::Camera:
        return describe(visitor, static_cast<const SceneNodeCamera&>(node));
    case NodeType::RenderSettings:
        return describe(visitor, static_cast<const SceneNodeRenderSettings&>(node));
    case NodeType::Material:
        return describe(visitor, static_cast<const SceneNodeMaterial&>(node));
    case NodeType::Mesh:
        describeSettings(visitor, static_cast<const SceneNodeMesh&>(node));
        return describeFile(visitor, static_cast<const SceneNodeMesh&>(node).path);
    case NodeType::Object:
        return describe(visitor, static_cast<const SceneNodeModel&>(node));
    case NodeType::Sphere:
        return describe(visitor, static_cast<const SceneNodeSphere&>(node));
    case NodeType::ToneMapping:
        return describe(visitor, static_cast<const SceneNodeTonemapping&>(node));
    case NodeType::BackgroundSettings:
        return describe(visitor, static_cast<const SceneNodeBackgroundSettings&>(node));
    case NodeType::Curve1D:
        return describe(visitor, static_cast<const SceneNodeCurve1D&>(node));
    default:
        visitor.name(node);
        return sink.markup({}, static_cast<const ForeignNode&>(node).content.text.view(), 0);
    }
}

} // namespace Velmar
