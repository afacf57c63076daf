#include "scene/ElementWriter.h"

#include "scene/NumberText.h"

#include <string>

namespace Velmar {

void ElementWriter::verbatim(std::string_view element, const String& field) {
    std::string start(depth, '\t');
    start.append("<").append(element).append("><![CDATA[");
    stream.write(start);
    stream.write(field);
    stream.write(std::string("]]></").append(element).append(">\n"));
}

void ElementWriter::numbers(std::string_view element, const Vector<float>& field) {
    std::string text;
    for (const float number : field) {
        if (!text.empty()) text += ' ';
        text += NumberText(number).view();
    }
    writeStringElement(stream, depth, element, text);
}

} // namespace Velmar
