#pragma once

#include "scene/ElementWriter.h"
#include "scene/Material.h"
#include "scene/Rotations.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/SceneNodeCamera.h"
#include "scene/nodes/SceneNodeCurve1D.h"

#include <algorithm>
#include <cstddef>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace Velmar {

class SceneDocumentError;

/// How a description uses an element.
enum class ElementForm {
    /// A value, or an element that holds others.
    plain,
    /// Its being there is the value.
    flag,
    /// One of a few words.
    word,
};

/// An element inside of one that is being read.
struct InnerElement {
    pugi::xml_node node;
    /// Empty once the element was read.
    std::string_view name;
};

/// What the readers of a document's elements share: the text that they come from, and what becomes of faults.
class ElementSource {
  public:
    ElementSource() = default;
    ElementSource(const ElementSource&) = delete;
    ElementSource& operator=(const ElementSource&) = delete;

    /// The text that is parsed, unchanged, with line feeds as its only line ends.
    virtual std::string_view getText() = 0;
    /// Throws `SceneDocumentError` for the place of `element`.
    [[noreturn]] void fail(const pugi::xml_node& element, const std::string& fault);
    virtual SceneDocumentError makeError(const pugi::xml_node& element, const std::string& fault) = 0;
    /// Receives what nothing reads.
    virtual void noteUnknown(const pugi::xml_node& element) = 0;

    /// Receives each name that is looked for in an element, if `wants_names`; some several times.
    virtual void noteName(const pugi::xml_node& element, std::string_view name, ElementForm form) = 0;

    /// The text of an element: from the `<` of its first tag to the `>` of its last.
    std::string_view getOuterText(const pugi::xml_node& element);
    /// The text between its tags, without white space at both ends.
    std::string_view getInnerText(const pugi::xml_node& element);
    /// What follows `element` in the element that encloses it, without white space at both ends.
    std::string_view getTextAfter(const pugi::xml_node& element);

    /// The characters of an element. Valid until the next call.
    std::string_view getValue(const pugi::xml_node& element);

    bool wants_names = false;

    /// The elements inside of those that are being read: first those of the outermost reader.
    std::vector<InnerElement> inner_elements;

  protected:
    ~ElementSource() = default;

  private:
    std::string joined;
};

/// Reads what a description lists from an element, in whatever order it is there. An element that was read loses its
/// name in the list, so that those that remain are the ones that nothing knows. Readers of one source end in the
/// reverse order of their making.
class ElementReader {
  public:
    static constexpr bool reads = true;
    static constexpr bool writes = false;

    ElementReader(ElementSource& source_, const pugi::xml_node& element_);
    ~ElementReader() { source.inner_elements.resize(first); }
    ElementReader(const ElementReader&) = delete;
    ElementReader& operator=(const ElementReader&) = delete;

    /// Reports what wasn't read.
    void finish();
    /// Throws `SceneDocumentError` for the place of the element.
    [[noreturn]] void fail(const std::string& fault) { source.fail(element, fault); }

    bool has(std::string_view name, bool = false) { return isThere(find(name)); }

    void identity(SceneNode& node);
    void name(SceneNode& node);
    void materialUID(SceneNode& node);

    template <class Field>
    bool value(std::string_view name, Field& field) {
        const std::size_t found = find(name);
        if (!isThere(found)) return false;
        parse(nodeAt(found), field);
        markRead(found);
        return true;
    }
    template <class Field>
    void required(std::string_view name, Field& field) {
        if (!value(name, field)) failWithout(name);
    }
    template <class Field>
    void valueIf(bool, std::string_view name, Field& field, const std::type_identity_t<Field>& default_value) {
        if (!value(name, field)) field = default_value;
    }
    template <class Field>
    void valueOr(std::string_view name, Field& field, const std::type_identity_t<Field>& default_value) {
        valueIf(false, name, field, default_value);
    }
    bool signedValue(std::string_view name, std::uint32_t& field);
    void signedValueOr(std::string_view name, std::uint32_t& field, std::uint32_t default_value) {
        if (!signedValue(name, field)) field = default_value;
    }
    template <class Field>
    void option(std::string_view name, Field& field, bool& is_set) {
        is_set = value(name, field);
    }
    void flag(std::string_view name, bool& field);
    void path(std::string_view name, String& field) { value(name, field); }
    void requiredPath(std::string_view name, String& field) { required(name, field); }
    void word(std::string_view name, std::uint32_t& code, std::span<const std::string_view> words);
    void verbatim(std::string_view name, String& field);
    void numbers(std::string_view name, Vector<float>& field);

    /// References become UIDs here; they are bound once all nodes are there.
    template <class Node>
    void reference(std::string_view name, Reference<Node>&, UID& unbound) {
        value(name, unbound);
    }
    template <class Node>
    void references(std::string_view group_name, std::string_view name, Vector<Reference<Node>>&, Vector<UID>& uids) {
        group(group_name, [&](ElementReader& inside) { inside.readUIDs(name, uids); });
    }
    template <class Node>
    void boundReferences(std::string_view group_name, std::string_view name, Vector<Node*>&, Vector<UID>& uids) {
        while (has(group_name))
            group(group_name, [&](ElementReader& inside) { inside.readUIDs(name, uids); });
    }

    bool variant(std::string_view name, std::uint32_t& code, std::uint32_t own_code) {
        if (!has(name)) return false;
        code = own_code;
        return true;
    }
    static void noVariant(std::uint32_t& code) { code = 0; }

    template <class Describe>
    void group(std::string_view name, Describe describeContent) {
        const std::size_t found = find(name);
        if (!isThere(found)) return;
        {
            ElementReader inside(source, nodeAt(found));
            describeContent(inside);
            inside.finish();
        }
        markRead(found);
    }

    template <class Object>
    void record(std::string_view name, Reference<Object>& object) {
        if (!has(name)) return;
        object = new Object;
        group(name, [&](ElementReader& inside) { describe(inside, *object); });
    }
    template <class Object>
    void records(std::string_view name, Vector<Reference<Object>>& objects) {
        objects.reserve(count(name));
        while (has(name)) {
            Reference<Object> object;
            record(name, object);
            objects.push_back(object);
        }
    }
    template <class Object>
    void list(std::string_view name, Vector<Object>& objects) {
        const std::size_t number = count(name);
        for (std::size_t i = 0; i < number; ++i) {
            // A document may name many that it doesn't describe.
            constexpr std::size_t max_unseen = 1024;
            if (i == objects.capacity()) objects.reserve(std::min(number, std::max(2 * i, max_unseen)));
            objects.resize(i + 1);
            group(name, [&](ElementReader& inside) { describe(inside, objects[i]); });
        }
    }
    void list(std::string_view name, Vector<String>& texts);

    /// The content of this element.
    void part(Reference<Spectrum>& part);
    void part(Reference<WavelengthDependentParam>& part);
    void part(Reference<SurfaceParam>& part);
    void part(Reference<Rotation>& part);
    void part(Reference<TexCoordGeneration>& part);
    /// An element inside this one.
    void part(Reference<ApertureShape>& part);
    void part(Reference<SplatFilter>& part);
    void part(Reference<DownsizeFilter>& part);
    void part(Reference<WhitePoint>& part);
    void part(Reference<SharedShaderInfo>& part);
    void part(Reference<Material>& part);
    void parts(Vector<Reference<ShaderParameter>>& parts);
    void node(Reference<SceneNodeCurve1D>& node);
    void kind(std::string_view name);

    /// What follows the elements that every node begins with, as text.
    std::string_view takeTextAfterIdentity(SceneNode& node);

  private:
    /// The place of an unread element, or `end`.
    std::size_t find(std::string_view name) const;
    bool isThere(std::size_t place) const { return place != end; }
    std::size_t count(std::string_view name) const;
    std::string_view nameAt(std::size_t place) const { return source.inner_elements[place].name; }
    pugi::xml_node nodeAt(std::size_t place) const { return source.inner_elements[place].node; }
    void markRead(std::size_t place);
    void markAllRead();
    [[noreturn]] void failWithout(std::string_view name);
    void readUIDs(std::string_view name, Vector<UID>& uids);
    std::string_view takeInnerText();

    void parse(const pugi::xml_node& child, bool& field);
    void parse(const pugi::xml_node& child, std::int32_t& field);
    void parse(const pugi::xml_node& child, std::uint32_t& field);
    void parse(const pugi::xml_node& child, double& field);
    void parse(const pugi::xml_node& child, Vec3d& field);
    void parse(const pugi::xml_node& child, String& field);
    void parse(const pugi::xml_node& child, double (&field)[9]);
    void parseNumbers(const pugi::xml_node& child, std::span<double> numbers);
    template <class Integer>
    void parseInteger(const pugi::xml_node& child, Integer& field);

    template <class Object, class Base>
    bool readKind(Reference<Base>& part, Reference<Object> made);
    template <class Object, class Foreign, class Base>
    void readFamily(Reference<Base>& part);
    template <class Object>
    bool readMaterial(Reference<Material>& part);

    ElementSource& source;
    pugi::xml_node element;
    /// The places of its elements in the source's list.
    const std::size_t first;
    std::size_t end;
    std::size_t first_unread;
    /// What `find` looked for last, and what it found: there is no unread element of this name before.
    mutable std::string_view last_name;
    mutable std::size_t last_found = 0;
};

} // namespace Velmar
