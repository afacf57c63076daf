#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarvec.h"
#include "velmarvector.h"

#include "scene/NumberText.h"
#include "scene/SceneNode.h"
#include "scene/XMLPrimitives.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

/// Every class that a document holds has one description of its element, a template
///
///     template <class Elements>
///     void describe(Elements& elements, Described<Elements, SceneNodeCamera>& camera);
///
/// that lists the elements in the order of writing, each with its field. The writer and the reader of documents visit
/// the same description: `ElementWriter` writes what it lists, `ElementReader` looks for it, and `ElementVisitor`
/// passes on the values. As a template it costs the writer nothing.
///
/// A description says of an element:
///
/// | call | written | read |
/// |---|---|---|
/// | `value`, `path`, `word` | always | when it is there; else the field keeps the constructor's value |
/// | `required`, `requiredPath` | always | must be there |
/// | `valueOr`, `valueIf` | unless the field has the default | as the default when it isn't there |
/// | `option` | when the field is set | when it is there, which sets the field |
/// | `flag` | as an empty element when true | as whether it is there |
/// | `group` | always, around what the given function describes | as `value` |
/// | `record`, `records`, `list` | each object that there is | each element of that name |
/// | `part` | by the object's own class | as an object of the class that the element names |
///
/// `has(name, written)` decides about an element in all other cases: the writer returns `written`, the reader whether
/// the element is there.

namespace Velmar {

/// An object as a description sees it: the writer only looks at it.
template <class Elements, class Object>
using Described = std::conditional_t<Elements::reads, Object, const Object>;

/// The name of the element of a class.
template <class Object>
inline constexpr std::string_view element_of{};

/// Writes what a description lists, by the functions of `XMLPrimitives.h`.
class ElementWriter {
  public:
    static constexpr bool reads = false;
    static constexpr bool writes = true;

    /// The elements are written at `depth_` tabs. `options_` may be null for elements without paths.
    ElementWriter(OStream& stream_, std::uint32_t depth_, const XMLWriteOptions* options_)
        : stream(stream_), depth(depth_), options(options_) {}

    static bool has(std::string_view, bool written) { return written; }

    void identity(const SceneNode& node) { writeNodeIdentity(stream, depth, node); }
    void name(const SceneNode& node) { value("name", node.getName()); }
    void materialUID(const SceneNode& node) {
        if (options->write_material_uids) value("uid", node.getUID());
    }

    void value(std::string_view element, bool field) { writeBoolElement(stream, depth, element, field); }
    void value(std::string_view element, std::int32_t field) { writeInt32Element(stream, depth, element, field); }
    void value(std::string_view element, std::uint32_t field) { writeUInt32Element(stream, depth, element, field); }
    void value(std::string_view element, double field) { writeDoubleElement(stream, depth, element, field); }
    void value(std::string_view element, const Vec3d& field) { writeVec3Element(stream, depth, element, field); }
    void value(std::string_view element, const String& field) { writeStringElement(stream, depth, element, field); }
    void value(std::string_view element, const double (&field)[9]) {
        writeMatrix3Element(stream, depth, element, field);
    }

    template <class Field>
    void required(std::string_view element, const Field& field) {
        value(element, field);
    }

    template <class Field>
    void valueIf(bool written, std::string_view element, const Field& field, const Field&) {
        if (written) value(element, field);
    }
    template <class Field>
    void valueOr(std::string_view element, const Field& field, const std::type_identity_t<Field>& default_value) {
        if (field != default_value) value(element, field);
    }

    /// The same bits as a number with a sign.
    void signedValue(std::string_view element, std::uint32_t field) {
        value(element, static_cast<std::int32_t>(field));
    }
    void signedValueOr(std::string_view element, std::uint32_t field, std::uint32_t default_value) {
        if (field != default_value) signedValue(element, field);
    }

    template <class Field>
    void option(std::string_view element, const Field& field, bool is_set) {
        if (is_set) value(element, field);
    }

    void flag(std::string_view element, bool field) {
        if (field) writeEmptyTag(stream, depth, element);
    }

    void path(std::string_view element, const String& field) {
        writePathElement(stream, depth, element, field, *options);
    }
    void requiredPath(std::string_view element, const String& field) { path(element, field); }

    /// A code as the word of its index; an unknown code is an empty text.
    void word(std::string_view element, std::uint32_t code, std::span<const std::string_view> words) {
        writeStringElement(stream, depth, element, code < words.size() ? words[code] : std::string_view());
    }

    /// The UID of `node` or, while it isn't bound, the stored one.
    template <class Node>
    void reference(std::string_view element, const Reference<Node>& node, UID unbound) {
        value(element, node ? node->getUID() : unbound);
    }

    /// A group of the UIDs of bound nodes. Those that are only stored are left out.
    template <class Node>
    void references(std::string_view group_element, std::string_view element, const Vector<Reference<Node>>& nodes,
                    const Vector<UID>&) {
        group(group_element, [&](ElementWriter& inside) {
            for (const Reference<Node>& node : nodes)
                inside.value(element, node ? node->getUID() : invalid_uid);
        });
    }

    /// A group for each of `nodes`, with its UID.
    template <class Node>
    void boundReferences(std::string_view group_element, std::string_view element, const Vector<Node*>& nodes,
                         const Vector<UID>&) {
        for (const Node* const node : nodes)
            group(group_element, [&](ElementWriter& inside) { inside.value(element, node->getUID()); });
    }

    /// A text as it is, in a CDATA section that is there even when it is empty.
    void verbatim(std::string_view element, const String& field);

    /// Numbers with a space between.
    void numbers(std::string_view element, const Vector<float>& field);

    /// Whether `code` is `own_code`, of which the element `element` is a sign.
    static bool variant(std::string_view, std::uint32_t code, std::uint32_t own_code) { return code == own_code; }
    static void noVariant(std::uint32_t) {}

    template <class Describe>
    void group(std::string_view element, Describe describeContent) {
        writeOpenTag(stream, depth, element);
        ElementWriter inside(stream, depth + 1, options);
        describeContent(inside);
        writeCloseTag(stream, depth, element);
    }

    /// The element of an object that isn't null.
    template <class Object>
    void record(std::string_view element, const Reference<Object>& object) {
        if (object && isWritten(*object)) group(element, [&](ElementWriter& inside) { describe(inside, *object); });
    }
    template <class Object>
    void records(std::string_view element, const Vector<Reference<Object>>& objects) {
        for (const Reference<Object>& object : objects)
            record(element, object);
    }

    template <class Object>
    void list(std::string_view element, const Vector<Object>& objects) {
        for (const Object& object : objects)
            group(element, [&](ElementWriter& inside) { describe(inside, object); });
    }
    void list(std::string_view element, const Vector<String>& texts) {
        for (const String& text : texts)
            value(element, text);
    }

    /// An object whose class writes it; nothing for null.
    template <class Object>
    void part(const Reference<Object>& object) {
        if (!object) return;
        if constexpr (requires { object->writeXML(stream, depth, *options); })
            object->writeXML(stream, depth, *options);
        else
            object->writeXML(stream, depth);
    }
    template <class Object>
    void parts(const Vector<Reference<Object>>& objects) {
        for (const Reference<Object>& object : objects)
            part(object);
    }

    /// A node that is part of another one. It has no paths.
    template <class Node>
    void node(const Reference<Node>& node) {
        const XMLWriteOptions without_paths{};
        node->writeXML(stream, depth, without_paths);
    }

    /// An empty element that names the class of an object.
    void kind(std::string_view element) { writeEmptyTag(stream, depth, element); }

    // ---- for descriptions of elements that follow no rule

    OStream& stream;
    const std::uint32_t depth;
    const XMLWriteOptions* const options;

  private:
    template <class Object>
    static bool isWritten(const Object& object) {
        if constexpr (requires { object.isWritten(); })
            return object.isWritten();
        else
            return true;
    }
};

inline void ElementWriter::verbatim(std::string_view element, const String& field) {
    std::string start(depth, '\t');
    start.append("<").append(element).append("><![CDATA[");
    stream.write(start);
    stream.write(field);
    stream.write(std::string("]]></").append(element).append(">\n"));
}

inline void ElementWriter::numbers(std::string_view element, const Vector<float>& field) {
    std::string text;
    for (const float number : field) {
        if (!text.empty()) text += ' ';
        text += NumberText(number).view();
    }
    writeStringElement(stream, depth, element, text);
}

/// Writes the element of `object` as its class describes it.
template <class Object>
void writeDescribed(OStream& stream, std::uint32_t depth, const Object& object, const XMLWriteOptions* options) {
    ElementWriter(stream, depth, options).group(element_of<Object>, [&](ElementWriter& inside) {
        describe(inside, object);
    });
}

} // namespace Velmar
