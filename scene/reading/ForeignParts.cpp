#include "scene/reading/ForeignParts.h"

#include "scene/ClassSupport.h"
#include "scene/XMLPrimitives.h"

namespace Velmar {

namespace {

void hashText(XXH64_state_t* state, const ForeignText& content) {
    XXH64_update(state, content.text.data(), content.text.size());
}

} // namespace

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
    const Reference<ForeignNode> copy(new ForeignNode(type));
    copyBaseFields(*this, *copy);
    copy->element = element;
    copy->content = content;
    return constructResult(result, copy);
}

void ForeignNode::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const {
    if (element.empty()) return;
    writeOpenTag(stream, depth, element.view());
    writeNodeIdentity(stream, depth + 1, *this);
    content.write(stream, depth + 1);
    writeCloseTag(stream, depth, element.view());
}

} // namespace Velmar
