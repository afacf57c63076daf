#include "tools/ComparedDocument.h"

#include "scene/reading/ElementVisitor.h"
#include "scene/reading/Markup.h"
#include "scene/reading/SceneXMLReader.h"
#include "tools/Console.h"
#include "tools/ElementFinder.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

using namespace Velmar;

namespace {

/// Markup without the white space between its tags.
std::string withoutIndentation(std::string_view markup) {
    std::string text;
    text.reserve(markup.size());
    for (std::size_t at = 0; at < markup.size(); ++at) {
        if (Markup::isSpace(markup[at]) && (text.empty() || text.back() == '>')) {
            const std::size_t next = markup.find_first_not_of(" \t\r\n", at);
            if (next == std::string_view::npos) break;
            if (markup[next] != '<') text.append(markup.substr(at, next - at));
            at = next;
        }
        text += markup[at];
    }
    return text;
}

/// Numbers that count as the same have the same bits.
double normalised(double number) {
    if (std::isnan(number)) return std::numeric_limits<double>::quiet_NaN();
    return number == 0.0 ? 0.0 : number;
}

/// Gathers the values of a node as bytes, from which its digest is made. Each part is preceded by what it is, so that
/// different values never give the same bytes.
class ContentBytes {
  public:
    ContentBytes(const ComparedDocument& document_, FileContents& files_, std::string& bytes_, double grid_)
        : document(document_), files(files_), bytes(bytes_), grid(grid_) {
        bytes.clear();
    }

    void enter(std::string_view element, std::size_t) {
        ++depth;
        begin('(', element);
    }
    void leave() {
        --depth;
        bytes += ')';
    }
    void flag(std::string_view element, bool value) { begin(value ? 't' : 'f', element); }
    void numbers(std::string_view element, std::span<const double> values) { addNumbers(element, values); }
    void numbers(std::string_view element, std::span<const float> values) { addNumbers(element, values); }
    void text(std::string_view element, std::string_view value, std::size_t) {
        // The name is compared for itself.
        if (depth == 0 && element == "name") return;
        begin('s', element);
        add(value.size());
        bytes += value;
    }
    void markup(std::string_view element, std::string_view elements, std::size_t index) {
        text(element, withoutIndentation(elements), index);
    }
    void file(std::string_view element, std::string_view path) {
        begin('p', element);
        if (path.empty()) return;
        const FileContent& content = files.get(path);
        add(content.is_read);
        add(content.digest);
    }
    void reference(std::string_view element, const SceneNode* node, UID, std::size_t) {
        begin('r', element);
        add(document.identify(node));
    }

  private:
    void begin(char kind, std::string_view element) {
        bytes += kind;
        bytes += element;
        bytes += '\0';
    }
    template <class Value>
    void add(const Value& value) {
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    template <class Number>
    void addNumbers(std::string_view element, std::span<const Number> values) {
        begin('n', element);
        add(values.size());
        for (const Number value : values) {
            const auto number = static_cast<double>(value);
            add(normalised(grid > 0 ? std::floor(number / grid + 0.5) : number));
        }
    }

    const ComparedDocument& document;
    FileContents& files;
    std::string& bytes;
    double grid;
    std::size_t depth = 0;
};

/// Passes the values of a node on.
class ValueVisitor {
  public:
    ValueVisitor(const ComparedDocument& document_, FileContents& files_, const std::function<void(NodeValue&&)>& take_)
        : document(document_), files(files_), take(take_) {}

    void enter(std::string_view element, std::size_t index) { steps.push_back({element, index}); }
    void leave() { steps.pop_back(); }
    void flag(std::string_view element, bool value) { add(element, 0, value); }
    void numbers(std::string_view element, std::span<const double> listed) {
        add(element, 0, std::vector<double>(listed.begin(), listed.end()));
    }
    void numbers(std::string_view element, std::span<const float> listed) {
        add(element, 0, std::vector<double>(listed.begin(), listed.end()));
    }
    void text(std::string_view element, std::string_view value, std::size_t index) {
        add(element, index, std::string(value));
    }
    void markup(std::string_view element, std::string_view elements, std::size_t index) {
        add(element, index, withoutIndentation(elements));
    }
    void file(std::string_view element, std::string_view path) {
        if (path.empty())
            add(element, 0, std::string());
        else
            add(element, 0, NodeValue::File{&files.get(path), std::string(path)});
    }
    void reference(std::string_view element, const SceneNode* node, UID, std::size_t index) {
        add(element, index, NodeValue::Target{document.identify(node), node});
    }

  private:
    void add(std::string_view element, std::size_t index, NodeValue::Content content) {
        steps.push_back({element, index});
        const std::string way = describePath({}, steps);
        steps.pop_back();
        // A copy, which has no capacity to spare: there may be very many.
        take({way.substr(way.starts_with('/') ? 1 : 0), std::move(content)});
    }

    const ComparedDocument& document;
    FileContents& files;
    const std::function<void(NodeValue&&)>& take;
    std::vector<VisitedElement> steps;
};

class OffsetList final : public ReadingListener {
  public:
    explicit OffsetList(std::vector<std::size_t>& offsets_) : offsets(offsets_) {}
    void onNode(const SceneNode&, std::size_t offset) override { offsets.push_back(offset); }
    void onUnknown(std::size_t) override {}

  private:
    std::vector<std::size_t>& offsets;
};

struct SameValue {
    double tolerance;

    bool operator()(const std::vector<double>& a, const std::vector<double>& b) const {
        return std::ranges::equal(a, b, [&](double x, double y) {
            return x == y || (std::isnan(x) && std::isnan(y)) || std::fabs(x - y) <= tolerance;
        });
    }
    bool operator()(const NodeValue::Target& a, const NodeValue::Target& b) const { return a.identity == b.identity; }
    bool operator()(const NodeValue::File& a, const NodeValue::File& b) const {
        return a.content->is_read == b.content->is_read && a.content->digest == b.content->digest;
    }
    bool operator()(bool a, bool b) const { return a == b; }
    bool operator()(const std::string& a, const std::string& b) const { return a == b; }
    template <class A, class B>
    bool operator()(const A&, const B&) const {
        return false;
    }
};

} // namespace

bool areSame(const NodeValue::Content& a, const NodeValue::Content& b, double tolerance) {
    return std::visit(SameValue{tolerance}, a, b);
}

bool isReferable(NodeType type) {
    return type == NodeType::Mesh || type == NodeType::Material || isForeign(type);
}

ComparedDocument::ComparedDocument(const std::string& path_, FileContents::Places& places, Progress& progress)
    : path(path_), files(path_, places, progress) {
    progress.show("reading " + Text::fileName(path));
    OffsetList listener(offsets);
    SceneReadRequest request;
    request.path = toVelmarString(path);
    request.listener = &listener;
    try {
        root = readSceneXML(request);
    } catch (const SceneDocumentError& error) {
        throw Failure(path + ":" + std::to_string(error.line) + ":" + std::to_string(error.column) + ": " +
                      error.fault);
    } catch (...) {
        throw makeFailureOf(path);
    }
}

std::size_t ComparedDocument::getLine(std::size_t index) {
    if (lines.empty()) {
        const MappedFile file(path);
        const std::string_view text = file.getText();
        std::size_t at = 0;
        std::size_t line = 1;
        lines.reserve(offsets.size());
        for (const std::size_t offset : offsets) {
            const std::string_view between = text.substr(std::min(at, text.size()), offset - at);
            line += static_cast<std::size_t>(std::ranges::count(between, '\n'));
            at = offset;
            lines.push_back(line);
        }
    }
    return lines[index];
}

Digest ComparedDocument::getContent(std::size_t index, double grid) {
    ContentBytes bytes(*this, files, buffer, grid);
    const SceneNode& node = getNode(index);
    visitNode(bytes, node);
    buffer += getElement(node);
    return Digest::of(buffer);
}

void ComparedDocument::visitValues(std::size_t index, const std::function<void(NodeValue&&)>& take) {
    ValueVisitor visitor(*this, files, take);
    visitNode(visitor, getNode(index));
}

void ComparedDocument::setIdentity(std::size_t index, const Digest& identity) {
    const SceneNode& node = getNode(index);
    if (isReferable(node.getType())) identities.insert_or_assign(&node, identity);
}

Digest ComparedDocument::identify(const SceneNode* node) const {
    // What isn't there is all the same.
    if (node == nullptr) return {};
    const auto known = identities.find(node);
    if (known != identities.end()) return known->second;
    // A node that no reference should name, or one that isn't in the document.
    if (isMissing(*node)) return {};
    return Digest::of(std::string(getElement(*node)) + '\n' + toStdString(node->getName()));
}
