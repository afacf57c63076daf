#include "velmarexceptions.h"

#include "mesh/MeshReaders.h"
#include "utils/MappedFile.h"
#include "utils/Parser.h"

#include <cstdint>
#include <string>

namespace Velmar {

namespace {

class MtlReader {
  public:
    MtlReader(Parser text, std::vector<MTLMaterial>& read_materials) : parser(text), materials(read_materials) {}

    void read() {
        while (!parser.atEnd()) {
            ++line_num;
            parser.skipSpacesAndTabs();
            Parser::Token keyword;
            // A comment has no identifier at its start, like any other line without one.
            if (parser.parseIdentifier(keyword)) readStatement(keyword);
            parser.advancePastLineEnd();
        }
    }

  private:
    void readStatement(const Parser::Token& keyword) {
        if (keyword == "newmtl") {
            const std::string name = readToken();
            materials.emplace_back().name = name;
        } else if (keyword == "Kd") {
            readColour(material().Kd);
        } else if (keyword == "Ks") {
            readColour(material().Ks);
        } else if (keyword == "Tf") {
            readColour(material().Tf);
        } else if (keyword == "Ns") {
            readNumber(material().Ns, "Ns");
        } else if (keyword == "Ni") {
            readNumber(material().Ni, "Ni");
        } else if (keyword == "d") {
            readNumber(material().d, "d");
        } else if (keyword == "map_Kd") {
            material().map_Kd = readToken();
        }
    }

    MTLMaterial& material() {
        if (materials.empty())
            throw Velmar::Exception("No material specified yet. (line " + std::to_string(line_num) + ")");
        return materials.back();
    }

    std::string readToken() {
        parser.skipBlanks();
        Parser::Token token;
        parser.parseNonBlankToken(token);
        return std::string(token.view());
    }

    void readColour(Vec3f& colour) {
        readNumber(colour.x, "colour");
        readNumber(colour.y, "colouur");
        readNumber(colour.z, "colour");
    }

    void readNumber(float& number, const char* what) {
        parser.skipBlanks();
        if (!parser.parseFloat(number))
            throw Velmar::Exception("Parse error while reading " + std::string(what) + " on line " +
                                    std::to_string(line_num));
    }

    Parser parser;
    std::vector<MTLMaterial>& materials;
    std::uint32_t line_num = 0;
};

} // namespace

void loadMTL(std::string_view path, MTLLibrary& library) {
    library.path = path;
    library.materials.clear();
    const MappedFile file(path);
    readMTL(file.getText(), library);
}

void readMTL(std::string_view text, MTLLibrary& library) {
    library.materials.clear();
    MtlReader(parserOver(text), library.materials).read();
}

} // namespace Velmar
