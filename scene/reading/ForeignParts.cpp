#include "scene/reading/ForeignParts.h"

#include "scene/ClassSupport.h"
#include "scene/NumberText.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/XMLPrimitives.h"
#include "scene/nodes/SceneNodeBackgroundSettings.h"
#include "scene/reading/Markup.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace Velmar {

namespace {

void hashText(XXH64_state_t* state, const ForeignText& content) {
    XXH64_update(state, content.text.data(), content.text.size());
}

constexpr std::string_view section_start = "<![CDATA[";
constexpr std::string_view section_end = "]]>";

/// The characters of an element that holds no other.
std::string valueOf(std::string_view content) {
    if (content.starts_with(section_start) && content.ends_with(section_end))
        return std::string(
            content.substr(section_start.size(), content.size() - section_start.size() - section_end.size()));
    constexpr std::pair<std::string_view, char> entities[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&amp;", '&'}};
    while (!content.empty() && Markup::isSpace(content.front()))
        content.remove_prefix(1);
    while (!content.empty() && Markup::isSpace(content.back()))
        content.remove_suffix(1);
    std::string value;
    while (!content.empty()) {
        const auto* const entity =
            std::ranges::find_if(entities, [&](const auto& known) { return content.starts_with(known.first); });
        const bool is_entity = entity != std::end(entities);
        value += is_entity ? entity->second : content.front();
        content.remove_prefix(is_entity ? entity->first.size() : 1);
    }
    return value;
}

/// Calls `change` with the name and the value of each element that holds no other; what that returns is the new value.
template <class Change>
String changeValues(std::string_view text, Change change) {
    std::string result;
    std::size_t copied = 0;
    for (std::size_t tag = 0; (tag = text.find('<', tag)) != std::string_view::npos;) {
        if (text.substr(tag, 2) == "<!" || text.substr(tag, 2) == "<?") {
            const std::string_view end = text[tag + 1] == '?'                   ? "?>"
                                         : text.substr(tag).starts_with("<!--") ? "-->"
                                                                                : section_end;
            const std::size_t found = text.find(end, tag);
            if (found == std::string_view::npos) break;
            tag = found + end.size();
            continue;
        }
        const std::size_t start = Markup::skipTag(text, tag);
        const std::string_view name = Markup::nameInTag(text, tag);
        tag = start;
        const std::string closing = "</" + std::string(name) + ">";
        const std::size_t end = text.substr(start).starts_with(section_start)
                                    ? text.find(section_end, start) + section_end.size()
                                    : text.find('<', start);
        if (name.empty() || text.substr(std::min(end, text.size()), closing.size()) != closing) continue;
        const std::string value = valueOf(text.substr(start, end - start));
        const std::string changed = change(name, value);
        if (changed == value) continue;
        result.append(text.substr(copied, start - copied)).append(escapeXMLEntities(changed));
        copied = end;
    }
    return copied == 0 ? String(text) : String(result.append(text.substr(copied)));
}

std::string offsetUIDText(const std::string& text, std::uint32_t offset) {
    UID uid = invalid_uid;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), uid);
    const bool is_uid = error == std::errc() && end == text.data() + text.size();
    return is_uid ? uint32ToString(offsetUID(uid, offset)) : text;
}

} // namespace

void ForeignText::traverse(TraversalState& state) {
    switch (state.kind) {
    case TraversalKind::GetDependencies:
        changeValues(text.view(), [&](std::string_view name, const std::string& value) {
            if (name == "path" && !value.empty()) state.dependencies.push_back(String(value));
            return value;
        });
        break;
    case TraversalKind::UpdateDependencies:
        text = changeValues(text.view(), [&](std::string_view name, const std::string& value) {
            if (name != "path" || value.empty()) return value;
            return toStdString(mapDependencyPath(state.path_map, String(value)));
        });
        break;
    case TraversalKind::OffsetUIDs:
        text = changeValues(text.view(), [&](std::string_view name, const std::string& value) {
            return name == "uid" || name.ends_with("_uid") ? offsetUIDText(value, state.uid_offset) : value;
        });
        break;
    default:
        break;
    }
}

namespace {

template <class Foreign, class Part>
void traversePart(const Reference<Part>& part, TraversalState& state) {
    if (auto* const foreign = dynamic_cast<Foreign*>(part.getPointer())) foreign->content.traverse(state);
}

void traverseShader(const Reference<Material>& material, TraversalState& state) {
    if (!material || !material->shared_shader_info) return;
    for (const Reference<ShaderParameter>& parameter : material->shared_shader_info->parameters)
        traversePart<ForeignShaderParameter>(parameter, state);
}

} // namespace

void traverseForeignParts(SceneNode& node, TraversalState& state) {
    if (node.getType() == NodeType::Camera)
        traversePart<ForeignApertureShape>(static_cast<SceneNodeCamera&>(node).aperture_shape, state);
    else if (node.getType() == NodeType::Material)
        traverseShader(static_cast<SceneNodeMaterial&>(node).material, state);
    else if (node.getType() == NodeType::BackgroundSettings)
        traverseShader(static_cast<SceneNodeBackgroundSettings&>(node).background_material, state);
}

void ForeignText::write(OStream& stream, std::uint32_t depth) const {
    if (text.empty()) return;
    stream.write(String(depth, '\t'));
    stream.write(text);
    stream.write("\n");
}

Reference<Spectrum>* ForeignSpectrum::cloneInto(Reference<Spectrum>* result) const {
    return constructResult(result, new ForeignSpectrum(content.text.view()));
}

void ForeignSpectrum::updateHash(XXH64_state_t* state) const {
    hashText(state, content);
}

void ForeignWavelengthDependentParam::updateHash(XXH64_state_t* state) const {
    hashText(state, content);
}

Reference<WavelengthDependentParam>*
ForeignWavelengthDependentParam::cloneInto(Reference<WavelengthDependentParam>* result) const {
    return constructResult(result, new ForeignWavelengthDependentParam(content.text.view()));
}

void ForeignSurfaceParam::updateHash(XXH64_state_t* state) const {
    hashText(state, content);
}

Reference<Rotation>* ForeignRotation::cloneInto(Reference<Rotation>* result) const {
    return constructResult(result, new ForeignRotation(content.text.view()));
}

void ForeignRotation::updateHash(XXH64_state_t* state) const {
    hashText(state, content);
}

Reference<ApertureShape>* ForeignApertureShape::cloneInto(Reference<ApertureShape>* result) const {
    return constructResult(result, new ForeignApertureShape(content.text.view()));
}

Reference<SplatFilter>* ForeignSplatFilter::cloneInto(Reference<SplatFilter>* result) const {
    return constructResult(result, new ForeignSplatFilter(content.text.view()));
}

Reference<DownsizeFilter>* ForeignDownsizeFilter::cloneInto(Reference<DownsizeFilter>* result) const {
    return constructResult(result, new ForeignDownsizeFilter(content.text.view()));
}

String* ForeignMaterial::getTypeNameInto(String* result) const {
    return constructResult(result, element);
}

void ForeignMaterial::updateHash(XXH64_state_t* state) const {
    hashText(state, content);
}

Reference<SceneNode>* ForeignNode::cloneInto(Reference<SceneNode>* result) const {
    const Reference<ForeignNode> copy(new ForeignNode(type, element.view(), content.text.view()));
    copyBaseFields(*this, *copy);
    return constructResult(result, copy);
}

void ForeignNode::traverse(TraversalState& state) {
    traverseOwnUID(state);
    content.traverse(state);
}

void ForeignNode::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const {
    writeOpenTag(stream, depth, element.view());
    writeNodeIdentity(stream, depth + 1, *this);
    content.write(stream, depth + 1);
    writeCloseTag(stream, depth, element.view());
}

Reference<SceneNode>* MissingNode::cloneInto(Reference<SceneNode>* result) const {
    const Reference<MissingNode> copy(new MissingNode(uid));
    copyBaseFields(*this, *copy);
    return constructResult(result, copy);
}

} // namespace Velmar
