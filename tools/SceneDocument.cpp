#include "tools/SceneDocument.h"

#include "tools/Console.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <charconv>
#include <pugixml.hpp>
#include <string_view>

using pugi::xml_node;

namespace {

/// Gathers the texts of all elements of one name below a node, however deep.
class TextFinder final : public pugi::xml_tree_walker {
  public:
    explicit TextFinder(std::string_view element_name) : name(element_name) {}

    bool for_each(xml_node& node) override {
        if (node.name() == name && !node.text().empty()) texts.emplace_back(node.text().get());
        return true;
    }

    std::vector<std::string> texts;

  private:
    std::string_view name;
};

/// The first element below a node that isn't what every node begins with.
xml_node getFirstOwnElement(const xml_node& node) {
    for (const xml_node child : node.children()) {
        const std::string_view name = child.name();
        if (child.type() == pugi::node_element && name != "uid" && name != "name") return child;
    }
    return {};
}

std::string describe(const xml_node& node) {
    const std::string_view kind = node.name();
    if (kind == "renderer_settings") {
        // Elements stand only for what isn't the default.
        const std::string_view width = node.child("width").text().as_string("800");
        const std::string_view height = node.child("height").text().as_string("600");
        return std::string(width).append(" x ").append(height);
    }
    if (kind == "camera") return node.child_value("camera_type");
    if (kind == "tonemapping" || kind == "material") return getFirstOwnElement(node).name();
    if (kind == "background_settings")
        return getFirstOwnElement(node.child("background_material").child("material")).name();
    return {};
}

class DocumentReader {
  public:
    explicit DocumentReader(const std::string& document_path) : path(document_path), file(document_path) {}

    SceneDocument read() {
        const pugi::xml_parse_result result =
            xml.load_buffer(file.getData(), file.getBytes().size(), pugi::parse_default, pugi::encoding_utf8);
        if (!result) fail(FileUtils::toLowerCase(result.description()), result.offset);
        const xml_node scene = xml.document_element();
        if (std::string_view(scene.name()) != "scene") fail("not a scene document: another root element", scene);
        for (xml_node next = scene.next_sibling(); next; next = next.next_sibling())
            if (next.type() == pugi::node_element) fail("a second root element", next);
        SceneDocument document;
        document.size = file.getSize();
        for (const xml_node node : scene.children())
            if (node.type() == pugi::node_element) document.nodes.push_back(readNode(node));
        return document;
    }

  private:
    DocumentNode readNode(const xml_node& node) const {
        DocumentNode result;
        result.kind = node.name();
        if (const xml_node uid = node.child("uid")) result.uid = readUID(uid);
        result.name = node.child("name").text().get();
        result.detail = describe(node);
        if (const xml_node geometry = node.child("geometry_uid")) result.geometry = readUID(geometry);
        for (const xml_node uid : node.child("materials").children("uid"))
            result.materials.push_back(readUID(uid));
        if (result.kind == "mesh") {
            const xml_node mesh_path = node.child("external").child("path");
            if (mesh_path.text().empty()) fail("a mesh without the path of its file", node);
            result.mesh_file = mesh_path.text().get();
        } else {
            TextFinder paths("path");
            xml_node(node).traverse(paths);
            result.other_files = std::move(paths.texts);
        }
        return result;
    }

    std::uint32_t readUID(const xml_node& element) const {
        const std::string_view text = element.text().get();
        std::uint32_t uid = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), uid);
        if (error != std::errc() || end != text.data() + text.size()) fail("an uid that is no number", element);
        return uid;
    }

    [[noreturn]] void fail(const std::string& fault, const xml_node& where) const { fail(fault, where.offset_debug()); }

    [[noreturn]] void fail(const std::string& fault, std::ptrdiff_t offset) const {
        const std::string_view text = file.getText();
        const auto before = text.substr(0, static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0)));
        const auto line = 1 + std::count(before.begin(), before.end(), '\n');
        throw Failure(path + ": " + fault + " on line " + std::to_string(line));
    }

    std::string path;
    MappedFile file;
    pugi::xml_document xml;
};

} // namespace

SceneDocument readSceneDocument(const std::string& path) {
    try {
        return DocumentReader(path).read();
    } catch (...) {
        throw makeFailureOf(path);
    }
}
