#include "scene/reading/ElementReader.h"

#include "scene/nodes/NodeElements.h"
#include "scene/reading/ForeignParts.h"
#include "scene/reading/Markup.h"
#include "scene/reading/SceneXMLReader.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace Velmar {

using Markup::isSpace;
using pugi::xml_node;

namespace {

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

/// For messages.
std::string quoted(std::string_view text) {
    constexpr std::size_t max_shown = 40;
    return text.size() <= max_shown ? "'" + std::string(text) + "'"
                                    : "'" + std::string(text.substr(0, max_shown)) + "...'";
}

/// Reads the number at the front of `text` and removes it. Numbers beyond the range become infinite or 0.
template <class Number>
bool takeNumber(std::string_view& text, Number& number) {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || (rest != end && !isSpace(*rest))) return false;
    text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
    return true;
}

bool isElement(const xml_node& node) {
    return node.type() == pugi::node_element;
}

/// The number of nodes from `node` to the last one beside it.
std::size_t countFrom(xml_node node) {
    std::size_t result = 0;
    for (; node; node = node.next_sibling())
        ++result;
    return result;
}

} // namespace

// ---- texts

void ElementSource::fail(const xml_node& element, const std::string& fault) {
    throw makeError(element, fault);
}

std::string_view ElementSource::getOuterText(const xml_node& element) {
    const std::string_view text = getText();
    const auto start = static_cast<std::size_t>(element.offset_debug() - 1);
    return text.substr(start, Markup::skipElement(text, start) - start);
}

std::string_view ElementSource::getInnerText(const xml_node& element) {
    const std::string_view outer = getOuterText(element);
    const std::size_t start = Markup::skipTag(outer, 0);
    if (start == outer.size()) return {};
    return trimmed(outer.substr(start, outer.rfind("</") - start));
}

std::string_view ElementSource::getTextAfter(const xml_node& element) {
    const std::string_view text = getText();
    const std::string_view outer = getOuterText(element);
    const std::string_view parent = getOuterText(element.parent());
    const auto start = static_cast<std::size_t>(outer.data() - text.data()) + outer.size();
    const auto end = static_cast<std::size_t>(parent.data() - text.data()) + parent.rfind("</");
    return trimmed(text.substr(start, end - start));
}

std::string_view ElementSource::getValue(const xml_node& element) {
    const xml_node first = element.first_child();
    if (!first) return element.value();
    if (!first.next_sibling() && *element.value() == '\0' && !isElement(first)) return first.value();

    // A section that holds the text that ends sections isn't split by writers of scenes: what is between the outermost
    // marks is meant.
    constexpr std::string_view section_start = "<![CDATA[";
    constexpr std::string_view section_end = "]]>";
    const std::string_view raw = getInnerText(element);
    if (raw.starts_with(section_start) && raw.ends_with(section_end)) {
        const std::string_view inside =
            raw.substr(section_start.size(), raw.size() - section_start.size() - section_end.size());
        if (inside.find('<') == std::string_view::npos) return inside;
    }
    joined = element.value();
    for (const xml_node& child : element.children()) {
        if (isElement(child)) fail(child, "an element inside of a value");
        joined += child.value();
    }
    return joined;
}

// ---- elements

ElementReader::ElementReader(ElementSource& source_, const xml_node& element_)
    : source(source_), element(element_), first(source_.inner_elements.size()), first_unread(first) {
    std::vector<InnerElement>& list = source.inner_elements;
    constexpr std::size_t max_uncounted = 1024;
    std::size_t number = 0;
    for (xml_node child = element.first_child(); child; child = child.next_sibling()) {
        if (!isElement(child)) continue;
        // Beside very many elements there is no memory to spare.
        if (++number == max_uncounted) list.reserve(list.size() + countFrom(child));
        list.push_back({child, child.name()});
    }
    end = list.size();
}

std::size_t ElementReader::find(std::string_view name) const {
    if (source.wants_names) source.noteName(element, name, ElementForm::plain);
    // Elements are only ever taken away, so the search for the next of many goes on from the last.
    std::size_t place = name == last_name ? last_found : first_unread;
    while (place != end && nameAt(place) != name)
        ++place;
    last_name = name;
    last_found = place;
    return place;
}

std::size_t ElementReader::count(std::string_view name) const {
    if (source.wants_names) source.noteName(element, name, ElementForm::plain);
    std::size_t result = 0;
    for (std::size_t place = first_unread; place != end; ++place)
        if (nameAt(place) == name) ++result;
    return result;
}

void ElementReader::markRead(std::size_t place) {
    source.inner_elements[place].name = {};
    while (first_unread != end && nameAt(first_unread).empty())
        ++first_unread;
}

void ElementReader::markAllRead() {
    first_unread = end;
    last_found = end;
}

void ElementReader::finish() {
    for (std::size_t place = first_unread; place != end; ++place)
        if (!nameAt(place).empty()) source.noteUnknown(nodeAt(place));
}

void ElementReader::failWithout(std::string_view name) {
    source.fail(element, quoted(element.name()) + " has no element " + quoted(name));
}

// ---- values

void ElementReader::parse(const xml_node& child, bool& field) {
    const std::string_view text = trimmed(source.getValue(child));
    if (text == "true")
        field = true;
    else if (text == "false")
        field = false;
    else
        source.fail(child, quoted(text) + " is neither true nor false");
}

template <class Integer>
void ElementReader::parseInteger(const xml_node& child, Integer& field) {
    const std::string_view text = trimmed(source.getValue(child));
    std::string_view rest = text;
    if (!takeNumber(rest, field) || !rest.empty())
        source.fail(child, quoted(text) + " is no whole number, or beyond 32 bits");
}

void ElementReader::parse(const xml_node& child, std::int32_t& field) {
    parseInteger(child, field);
}

void ElementReader::parse(const xml_node& child, std::uint32_t& field) {
    parseInteger(child, field);
}

void ElementReader::parseNumbers(const xml_node& child, std::span<double> numbers) {
    const std::string_view text = source.getValue(child);
    std::string_view rest = text;
    for (double& number : numbers)
        if (!takeNumber(rest, number))
            source.fail(child,
                        quoted(trimmed(text)) +
                            (numbers.size() == 1 ? " is no number, or out of range"
                                                 : " isn't a list of " + std::to_string(numbers.size()) + " numbers"));
    if (!trimmed(rest).empty()) source.fail(child, quoted(trimmed(rest)) + " after the last number");
}

void ElementReader::parse(const xml_node& child, double& field) {
    parseNumbers(child, std::span(&field, 1));
}

void ElementReader::parse(const xml_node& child, Vec3d& field) {
    double xyz[3];
    parseNumbers(child, std::span<double>(xyz));
    field = {xyz[0], xyz[1], xyz[2]};
}

void ElementReader::parse(const xml_node& child, double (&field)[9]) {
    parseNumbers(child, std::span<double>(field));
}

void ElementReader::parse(const xml_node& child, String& field) {
    const std::string_view text = source.getValue(child);
    // White space at the ends counts in a section only.
    field = String(child.first_child() ? text : trimmed(text));
}

bool ElementReader::signedValue(std::string_view name, std::uint32_t& field) {
    std::int32_t number = 0;
    if (!value(name, number)) return false;
    field = static_cast<std::uint32_t>(number);
    return true;
}

void ElementReader::flag(std::string_view name, bool& field) {
    if (source.wants_names) source.noteName(element, name, ElementForm::flag);
    const std::size_t found = find(name);
    field = isThere(found);
    if (field) markRead(found);
}

void ElementReader::word(std::string_view name, std::uint32_t& code, std::span<const std::string_view> words) {
    if (source.wants_names) source.noteName(element, name, ElementForm::word);
    constexpr std::uint32_t unknown_code = 0xFFFFFFFF;
    const std::size_t found = find(name);
    if (!isThere(found)) return;
    const std::string_view text = trimmed(source.getValue(nodeAt(found)));
    const auto match = std::ranges::find(words, text);
    if (match != words.end()) {
        code = static_cast<std::uint32_t>(match - words.begin());
    } else if (text.empty()) {
        code = unknown_code;
    } else {
        std::string fault = quoted(text) + " is none of";
        for (const std::string_view known : words)
            fault.append(" ").append(known);
        source.fail(nodeAt(found), fault);
    }
    markRead(found);
}

void ElementReader::verbatim(std::string_view name, String& field) {
    value(name, field);
}

void ElementReader::numbers(std::string_view name, Vector<float>& field) {
    const std::size_t found = find(name);
    if (!isThere(found)) return;
    const std::string_view text = trimmed(source.getValue(nodeAt(found)));
    for (std::string_view rest = text; !rest.empty();) {
        float number = 0.0f;
        if (!takeNumber(rest, number)) source.fail(nodeAt(found), quoted(text) + " isn't a list of numbers");
        field.push_back(number);
    }
    markRead(found);
}

void ElementReader::list(std::string_view name, Vector<String>& texts) {
    texts.resize(count(name));
    for (String& text : texts)
        value(name, text);
}

void ElementReader::readUIDs(std::string_view name, Vector<UID>& uids) {
    uids.reserve(uids.size() + count(name));
    for (UID uid = 0; value(name, uid);)
        uids.push_back(uid);
}

// ---- nodes

void ElementReader::materialUID(SceneNode& node) {
    UID uid = invalid_uid;
    required("uid", uid);
    if (uid == invalid_uid) source.fail(element, "the uid of a node can't be 4294967295, which means none");
    node.setUID(uid);
}

void ElementReader::name(SceneNode& node) {
    String text;
    required("name", text);
    node.setName(text);
}

void ElementReader::identity(SceneNode& node) {
    materialUID(node);
    name(node);
}

std::string_view ElementReader::takeTextAfterIdentity(SceneNode& node) {
    materialUID(node);
    const std::size_t name_element = find("name");
    if (!isThere(name_element)) failWithout("name");
    const std::string_view rest = source.getTextAfter(nodeAt(name_element));
    name(node);
    markAllRead();
    return rest;
}

void ElementReader::node(Reference<SceneNodeCurve1D>& node) {
    if (!has(element_of<SceneNodeCurve1D>)) failWithout(element_of<SceneNodeCurve1D>);
    node = new SceneNodeCurve1D({}, {});
    group(element_of<SceneNodeCurve1D>, [&](ElementReader& inside) { describe(inside, *node); });
}

// ---- parts

std::string_view ElementReader::takeInnerText() {
    markAllRead();
    return source.getInnerText(element);
}

/// Reads the part if it is of the class of `made`.
template <class Object, class Base>
bool ElementReader::readKind(Reference<Base>& part, Reference<Object> made) {
    if (!has(element_of<Object>)) return false;
    group(element_of<Object>, [&](ElementReader& inside) { describe(inside, *made); });
    part = made.getPointer();
    return true;
}

void ElementReader::part(Reference<Spectrum>& part) {
    if (readKind(part, Reference(new UniformSpectrum(0.0))) || readKind(part, Reference(new RGBSpectrum(Vec3d(), 0.0))))
        return;
    const std::string_view text = takeInnerText();
    if (!text.empty()) part = new ForeignSpectrum(text);
}

void ElementReader::part(Reference<WavelengthDependentParam>& part) {
    if (!readKind(part, Reference(new ConstantWavelengthDependentParam(nullptr))))
        part = new ForeignWavelengthDependentParam(takeInnerText());
}

void ElementReader::part(Reference<SurfaceParam>& part) {
    part = new ForeignSurfaceParam(takeInnerText());
}

void ElementReader::part(Reference<TexCoordGeneration>& part) {
    part = new ForeignTexCoordGeneration(takeInnerText());
}

void ElementReader::part(Reference<Rotation>& part) {
    if (!has(element_of<MatrixRotation>)) {
        part = new ForeignRotation(takeInnerText());
        return;
    }
    const Reference<MatrixRotation> made(new MatrixRotation);
    describeWhole(*this, *made);
    part = made.getPointer();
}

/// Reads a part whose element names the family, with an element inside that names the class.
template <class Object, class Foreign, class Base>
void ElementReader::readFamily(Reference<Base>& part) {
    const std::size_t found = find(element_of<Object>);
    if (!isThere(found)) return;
    if (nodeAt(found).child(kind_of<Object>.data())) {
        const Reference<Object> made(new Object);
        describeWhole(*this, *made);
        part = made.getPointer();
    } else {
        part = new Foreign(source.getOuterText(nodeAt(found)));
        markRead(found);
    }
}

void ElementReader::kind(std::string_view name) {
    if (has(name)) markRead(find(name));
}

void ElementReader::part(Reference<ApertureShape>& part) {
    readFamily<ApertureCircular, ForeignApertureShape>(part);
}

void ElementReader::part(Reference<SplatFilter>& part) {
    readFamily<SplatFilterFastBox, ForeignSplatFilter>(part);
}

void ElementReader::part(Reference<DownsizeFilter>& part) {
    readFamily<DownsizeFilterMNCubic, ForeignDownsizeFilter>(part);
}

void ElementReader::part(Reference<WhitePoint>& part) {
    const std::size_t found = find(element_of<WhitePoint>);
    if (!isThere(found)) return;
    double xy[2];
    parseNumbers(nodeAt(found), std::span<double>(xy));
    part = new WhitePoint(xy[0], xy[1]);
    markRead(found);
}

void ElementReader::part(Reference<SharedShaderInfo>& part) {
    record(element_of<SharedShaderInfo>, part);
}

void ElementReader::parts(Vector<Reference<ShaderParameter>>& parts) {
    // Of more, those that follow each other are kept as one: an object is larger than the shortest element.
    constexpr std::size_t max_alone = 100;
    const char* first_of_run = nullptr;
    std::string_view last;
    const auto add = [&] {
        if (first_of_run == nullptr) return;
        const auto size = static_cast<std::size_t>(last.data() + last.size() - first_of_run);
        parts.push_back(new ForeignShaderParameter({first_of_run, size}));
        first_of_run = nullptr;
    };
    for (std::size_t place = first_unread; place != end; ++place) {
        const std::string_view name = nameAt(place);
        if (!name.empty() && name != "include" && name != element_of<Texture> && name != "shader") {
            last = source.getOuterText(nodeAt(place));
            if (first_of_run == nullptr) first_of_run = last.data();
            if (parts.size() < max_alone) add();
            markRead(place);
        } else {
            add();
        }
    }
    add();
}

template <class Object>
bool ElementReader::readMaterial(Reference<Material>& part) {
    if (!has(element_of<Object>)) return false;
    const Reference<Object> made(new Object);
    group(element_of<Object>, [&](ElementReader& inside) {
        describeShader(inside, *made);
        describe(inside, *made);
    });
    describeSettings(*this, *made);
    part = made.getPointer();
    return true;
}

void ElementReader::part(Reference<Material>& part) {
    if (readMaterial<DiffuseMaterial>(part) || readMaterial<SunSkyMaterial>(part)) return;
    // Another kind: what is there beside the elements that every material has.
    const Reference<DiffuseMaterial> settings(new DiffuseMaterial);
    describeSettings(*this, *settings);
    for (std::size_t place = first_unread; place != end; ++place) {
        const std::string_view name = nameAt(place);
        if (name.empty() || name == "name" || name == "scatter_uids") continue;
        const Reference<ForeignMaterial> made(new ForeignMaterial(name, source.getInnerText(nodeAt(place))));
        made->backface_emit = settings->backface_emit;
        made->shadow_catcher = settings->shadow_catcher;
        made->delta_emission = settings->delta_emission;
        made->emission_sampling_factor = settings->emission_sampling_factor;
        made->mask_name = settings->mask_name;
        part = made.getPointer();
        markRead(place);
        return;
    }
    part = nullptr;
}

} // namespace Velmar
