#include "tools/DocumentEdit.h"

#include "import/ValidText.h"

#include "scene/XMLPrimitives.h"
#include "scene/reading/ElementReader.h"
#include "scene/reading/ElementVisitor.h"
#include "scene/reading/Markup.h"
#include "scene/reading/SceneXMLReader.h"
#include "tools/Console.h"
#include "tools/DocumentReferences.h"
#include "tools/Manual.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <set>
#include <span>
#include <utility>

using namespace Velmar;

namespace {

/// The name of an element and before it that of the one that it is in.
using Place = std::pair<std::string, std::string>;

/// What the descriptions of the elements say about a text.
class ElementsRead final : public ReadingListener {
  public:
    void onNode(const SceneNode& node, std::size_t) override {
        inside = {std::string(getElement(node))};
        visitNode(*this, node);
    }
    void onUnknown(std::size_t) override {}
    bool wantsNames() const override { return true; }
    void onName(std::string_view parent, std::string_view name, ElementForm form) override {
        ElementForm& known = forms[Place(parent, name)];
        if (form != ElementForm::plain) known = form;
    }

    bool isKnown(const Place& place) const { return forms.contains(place); }
    bool isForm(const Place& place, ElementForm form) const {
        const auto found = forms.find(place);
        return found != forms.end() && found->second == form;
    }
    std::size_t countUnknown(const Place& place) const {
        const auto found = unknown.find(place);
        return found == unknown.end() ? 0 : found->second;
    }
    std::vector<std::string> namesIn(const std::string& parent) const {
        std::vector<std::string> names;
        for (const auto& [place, form] : forms)
            if (place.first == parent && place.second != "uid") names.push_back(place.second);
        return names;
    }

    // What `visitNode` passes on.
    void enter(std::string_view element, std::size_t) { inside.emplace_back(element); }
    void leave() { inside.pop_back(); }
    void flag(std::string_view, bool) {}
    template <class Number>
    void numbers(std::string_view element, std::span<const Number> values) {
        if (!std::ranges::all_of(values, [](Number number) { return std::isfinite(number); }))
            not_finite.emplace(inside.back(), element);
    }
    void text(std::string_view, std::string_view, std::size_t) {}
    void markup(std::string_view, std::string_view, std::size_t) {}
    void file(std::string_view, std::string_view) {}
    void reference(std::string_view, const SceneNode*, UID, std::size_t) {}

    std::map<Place, ElementForm> forms;
    /// How often there is one.
    std::map<Place, std::size_t> unknown;
    std::set<Place> not_finite;

  private:
    std::vector<std::string> inside;
};

/// Reads a node. Throws `SceneDocumentError`.
void readNode(const std::string& node, ElementsRead& findings) {
    UnknownElements unknown;
    SceneReadRequest request;
    request.listener = &findings;
    request.unknown_elements = &unknown;
    parseSceneXML("<scene>" + node + "</scene>", request);
    for (const UnknownElement& element : unknown.listed)
        ++findings.unknown[Place(element.parent, element.name)];
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text.append(text.empty() ? "" : ", ").append(word);
    return text;
}

std::string suggest(const std::string& word, const std::vector<std::string>& known) {
    const std::string similar = findSimilar(word, known);
    return similar.empty() ? "" : "; did you mean '" + similar + "'?";
}

std::string elementText(const std::string& name, const std::string& content) {
    return "<" + name + ">" + content + "</" + name + ">";
}

/// The characters of a value as a document has them.
std::string valueText(const std::string& value) {
    const bool is_trimmed = value.empty() || (!Markup::isSpace(value.front()) && !Markup::isSpace(value.back()));
    return is_trimmed ? escapeXMLEntities(value) : "<![CDATA[" + value + "]]>";
}

/// A part of a text.
struct TextRange {
    std::size_t start;
    std::size_t end;
};

TextRange rangeOf(std::string_view text, const pugi::xml_node& element) {
    const auto start = static_cast<std::size_t>(element.offset_debug() - 1);
    return {start, Markup::skipElement(text, start)};
}

std::string replaced(std::string_view text, TextRange range, const std::string& by) {
    return std::string(text.substr(0, range.start)).append(by).append(text.substr(range.end));
}

/// The text with `content` as the last in the element at `range`.
std::string appended(std::string_view text, TextRange range, const std::string& content) {
    std::string element(text.substr(range.start, range.end - range.start));
    if (element.ends_with("/>")) {
        const std::string name(Markup::nameInTag(element, 0));
        element.replace(element.size() - 2, 2, ">").append(content).append("</").append(name).append(">");
    } else {
        element.insert(element.rfind("</"), content);
    }
    return replaced(text, range, element);
}

std::vector<pugi::xml_node> childrenOf(const pugi::xml_node& parent) {
    std::vector<pugi::xml_node> elements;
    for (const pugi::xml_node child : parent.children())
        if (child.type() == pugi::node_element) elements.push_back(child);
    return elements;
}

bool fits(const pugi::xml_node& element, const ElementStep& step) {
    return element.name() == step.name && std::ranges::all_of(step.conditions, [&](const auto& condition) {
               return element.child(condition.first.c_str()).text().get() == condition.second;
           });
}

bool isChosen(const ElementStep& step) {
    return step.index || step.all || !step.conditions.empty();
}

/// Each once.
void sortUIDs(std::vector<UID>& uids) {
    std::ranges::sort(uids);
    uids.erase(std::unique(uids.begin(), uids.end()), uids.end());
}

} // namespace

// ---- reading

class DocumentEdit::NodeCollector final : public ReadingListener {
  public:
    explicit NodeCollector(DocumentEdit& edit_) : edit(edit_) {}
    void onNode(const SceneNode& node, std::size_t offset) override {
        edit.nodes.push_back(
            {Markup::nameInTag(edit.text, offset), toStdString(node.getName()), node.getUID(), offset});
    }
    void onUnknown(std::size_t) override {}

  private:
    DocumentEdit& edit;
};

DocumentEdit::DocumentEdit(std::string path_) : path(std::move(path_)) {
    try {
        text = FileUtils::withoutByteOrderMark(MappedFile(path).getText());
    } catch (...) {
        throw makeFailureOf(path);
    }
    // As the reader has it: a document of Windows has no other line ends.
    if (const std::size_t line_end = text.find('\n');
        line_end != std::string::npos && line_end > 0 && text[line_end - 1] == '\r') {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < text.size(); ++i)
            if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') text[kept++] = text[i];
        text.resize(kept);
    }
    NodeCollector collector(*this);
    UnknownElements unknown_elements;
    SceneReadRequest request;
    request.path = toVelmarString(path);
    request.listener = &collector;
    request.unknown_elements = &unknown_elements;
    try {
        const Reference<SceneNodeRoot> scene = parseSceneXML(text, request);
        visitReferences(*scene, [&](const NodeReference& reference) {
            (reference.is_bound ? used : dangling).push_back(reference.uid);
        });
        sortUIDs(used);
        sortUIDs(dangling);
    } catch (const SceneDocumentError& error) {
        throw Failure(error.getMessage());
    } catch (...) {
        throw makeFailureOf(path);
    }
    constexpr std::size_t max_noted = 5;
    const std::vector<UnknownElement>& unknown = unknown_elements.listed;
    for (std::size_t i = 0; i < std::min(unknown.size(), max_noted); ++i)
        notes.push_back(path + ":" + std::to_string(unknown[i].line) + ":" + std::to_string(unknown[i].column) + ": '" +
                        unknown[i].name + "' in '" + unknown[i].parent + "' is unknown, and left out");
    if (unknown_elements.count > max_noted)
        notes.push_back(path + ": " + std::to_string(unknown_elements.count - max_noted) +
                        " more unknown elements are left out");
}

void DocumentEdit::fail(const std::string& fault) const {
    throw Failure(path + ": " + fault);
}

// ---- nodes

std::string_view DocumentEdit::getText(std::size_t node) const {
    const auto found = changed.find(node);
    if (found != changed.end()) return found->second;
    const std::size_t start = nodes[node].offset;
    return std::string_view(text).substr(start, Markup::skipElement(text, start) - start);
}

std::vector<std::size_t> DocumentEdit::findNodes(const ElementStep& step) const {
    std::vector<std::string> elements;
    std::vector<std::string> names;
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const Node& node = nodes[i];
        if (elements.empty() || elements.back() != node.element) elements.emplace_back(node.element);
        if (node.element != step.name) continue;
        names.push_back(node.name);
        const bool is_meant = std::ranges::all_of(step.conditions, [&](const auto& condition) {
            if (condition.first == "name") return condition.second == node.name;
            if (condition.first == "uid") return condition.second == std::to_string(node.uid);
            fail("'" + step.getText() + "': nodes are chosen by [name=...] or [uid=...]");
        });
        if (is_meant) found.push_back(i);
    }
    if (names.empty()) fail("there is no node '" + step.name + "'" + suggest(step.name, elements));
    if (step.index) {
        if (*step.index >= found.size())
            fail("'" + step.getText() + "': there are " + std::to_string(found.size()) + " of them");
        found = {found[*step.index]};
    }
    if (found.empty())
        fail("no node fits '" + step.getText() + "'" +
             (step.conditions.front().first == "name" ? suggest(step.conditions.front().second, names) : ""));
    if (found.size() > 1 && !step.all)
        fail(std::to_string(found.size()) + " nodes fit '" + step.getText() +
             "'; choose one by [name=...] or [uid=...], or all by " + step.name + "[*]");
    return found;
}

void DocumentEdit::set(const ElementPath& element, const std::string& value) {
    if (element.size() < 2)
        throw UsageError("'" + element[0].getText() + "' is a node; an element of it is set, as " + element[0].name +
                         ".name");
    if (element.size() == 2 && element[1].name == "uid")
        throw UsageError("uids can't be set: other nodes refer to them");
    if (!isValidText(value)) throw UsageError("'" + element[1].name + "': the value isn't text that XML may hold");
    for (const std::size_t node : findNodes(element[0])) {
        changeNode(node, element, &value);
        ++value_count;
    }
}

void DocumentEdit::remove(const ElementPath& element) {
    for (const std::size_t node : findNodes(element[0])) {
        if (element.size() > 1) {
            changeNode(node, element, nullptr);
            ++value_count;
        } else if (removed.insert(node).second) {
        }
    }
}

// ---- elements

/// A change of a node's text, and what is then to be read.
struct DocumentEdit::Change {
    std::string text;
    /// From the first element that is new to the one that is set.
    std::vector<Place> places;
    bool is_new = false;
    /// Of the element in the former text, if it is there.
    std::optional<TextRange> former;
};

void DocumentEdit::changeNode(std::size_t node, const ElementPath& element, const std::string* value) {
    const std::string before(getText(node));
    std::string shown = element[0].getText();
    const auto failHere = [&](const std::string& fault) { fail("'" + shown + "': " + fault); };

    pugi::xml_document tree;
    tree.load_buffer(before.data(), before.size(), pugi::parse_cdata | pugi::parse_escapes | pugi::parse_embed_pcdata,
                     pugi::encoding_utf8);
    pugi::xml_node at = tree.document_element();
    Change change;
    std::size_t depth = 1;
    for (; depth < element.size(); ++depth) {
        const ElementStep& step = element[depth];
        shown += "." + step.getText();
        if (step.all) failHere("[*] is for nodes");
        std::vector<pugi::xml_node> found = childrenOf(at);
        std::erase_if(found, [&](const pugi::xml_node& child) { return !fits(child, step); });
        if (found.empty() && value != nullptr && !isChosen(step)) break;
        if (found.size() <= step.index.value_or(0)) failHere("there is no such element");
        if (found.size() > 1 && !step.index)
            failHere("there are " + std::to_string(found.size()) + " of them; choose one by [0] to [" +
                     std::to_string(found.size() - 1) + "]");
        at = found[step.index.value_or(0)];
    }
    const bool is_there = depth == element.size();
    const std::string& leaf = element.back().name;
    if (value == nullptr) {
        if (element.size() == 2 && (leaf == "uid" || leaf == "name")) failHere("every node has one");
        change.text = replaced(before, rangeOf(before, at), "");
        change.places.emplace_back(at.parent().name(), leaf);
    } else if (is_there) {
        if (const auto inside = childrenOf(at); !inside.empty())
            failHere("holds other elements, which are set one by one: '" + shown + "." + inside.front().name() +
                     "' and so on");
        change.former = rangeOf(before, at);
        change.text = replaced(before, *change.former, elementText(leaf, valueText(*value)));
        change.places.emplace_back(at.parent().name(), leaf);
    } else {
        change.is_new = true;
        std::string content = valueText(*value);
        for (std::size_t i = element.size(); i-- > depth;) {
            if (isChosen(element[i])) failHere("there is no such element");
            content = elementText(element[i].name, content);
            change.places.emplace(change.places.begin(), i == depth ? at.name() : element[i - 1].name, element[i].name);
        }
        for (std::size_t i = depth + 1; i < element.size(); ++i)
            shown += "." + element[i].getText();
        change.text = appended(before, rangeOf(before, at), content);
    }

    tree.reset();
    ElementsRead findings;
    try {
        readNode(change.text, findings);
    } catch (const SceneDocumentError& error) {
        failHere(error.fault);
    }
    ElementsRead former;
    readNode(before, former);
    for (const Place& place : change.places) {
        if (value == nullptr) break;
        if (findings.countUnknown(place) > former.countUnknown(place) ||
            (!change.is_new && findings.unknown.contains(place))) {
            // Alone in its node it may be known: some elements are alternatives.
            const std::string parent(nodes[node].element);
            const std::string alone =
                elementText(parent, "<uid>1</uid><name/>" + elementText(place.second, valueText(*value)));
            ElementsRead of_alone;
            bool is_alternative = place.first == parent;
            try {
                if (is_alternative) readNode(alone, of_alone);
                is_alternative = is_alternative && !of_alone.unknown.contains(place);
            } catch (const SceneDocumentError&) {
                // Known, if not complete.
            }
            if (is_alternative)
                failHere("'" + place.second + "' can't be beside what '" + place.first +
                         "' has; remove that first by --remove");
            const std::vector<std::string> names = findings.namesIn(place.first);
            const std::string similar = suggest(place.second, names);
            failHere("'" + place.first + "' has no element '" + place.second + "'" +
                     (similar.empty() ? "; it may have " + joined(names) : similar));
        }
        if (findings.isKnown(place)) continue;
        if (change.is_new)
            failHere("'" + place.first + "' is of a class of the renderer library, to which no element can be added");
        notes.push_back("'" + shown + "' is of a class of the renderer library, so its value isn't checked");
    }
    for (const auto& [place, count] : findings.unknown)
        if (count > former.countUnknown(place))
            failHere("with this, '" + place.second + "' in '" + place.first +
                     "' has no place any more; remove it first");
    if (value != nullptr) {
        const Place& last = change.places.back();
        if (findings.not_finite.contains(last)) failHere("'" + *value + "' isn't a finite number");
        if (value->empty() && findings.isForm(last, ElementForm::word)) failHere("a word is needed");
        if (findings.isForm(last, ElementForm::flag)) {
            if (*value != "true" && *value != "false") failHere("'" + *value + "' is neither true nor false");
            // The element is there for true alone.
            if (*value == "false") change.text = change.former ? replaced(before, *change.former, "") : before;
        }
    }
    changed[node] = std::move(change.text);
}

// ---- the result

Reference<SceneNodeRoot> DocumentEdit::finish() {
    std::string result = "<scene>\n";
    for (std::size_t i = 0; i < nodes.size(); ++i)
        if (!removed.contains(i)) result.append(getText(i)).append("\n");
    result += "</scene>\n";
    SceneReadRequest request;
    request.path = toVelmarString(path);
    Reference<SceneNodeRoot> scene = parseSceneXML(result, request);
    checkReferences(*scene);
    noteUnused(*scene);
    return scene;
}

void DocumentEdit::checkReferences(SceneNodeRoot& scene) const {
    // To the node of the lowest UID of those that are lost.
    NodeReference first;
    std::size_t others = 0;
    visitReferences(scene, [&](const NodeReference& reference) {
        if (reference.is_bound || std::ranges::binary_search(dangling, reference.uid)) return;
        if (first.holder == nullptr || reference.uid < first.uid) {
            first = reference;
            others = 0;
        } else if (reference.uid == first.uid) {
            ++others;
        }
    });
    if (first.holder == nullptr) return;
    const UID uid = first.uid;
    const auto node = std::ranges::find_if(removed, [&](std::size_t i) { return nodes[i].uid == uid; });
    if (node == removed.end())
        fail(describeNode(*first.holder) + ": " + first.element + " can't be " + std::to_string(uid) +
             ": there is no such node that fits");
    fail(std::string(nodes[*node].element) + " '" + nodes[*node].name + "' (uid " + std::to_string(uid) +
         ") can't be removed: it is used by " + describeNode(*first.holder) +
         (others == 0 ? std::string() : " and " + Text::count(others, "other", "others")) +
         "; remove what uses it too, or have it use another node");
}

void DocumentEdit::noteUnused(SceneNodeRoot& scene) {
    std::vector<UID> still_used;
    visitReferences(scene, [&](const NodeReference& reference) { still_used.push_back(reference.uid); });
    sortUIDs(still_used);
    constexpr std::size_t max_named = 5;
    std::vector<std::string> unused;
    std::size_t more = 0;
    for (const Reference<SceneNode>& child : scene.children()) {
        const UID uid = child->getUID();
        if (!std::ranges::binary_search(used, uid) || std::ranges::binary_search(still_used, uid)) continue;
        if (unused.size() < max_named)
            unused.push_back(describeNode(*child));
        else
            ++more;
    }
    if (unused.empty()) return;
    notes.push_back("nothing uses " + joined(unused) + (more == 0 ? "" : " and " + std::to_string(more) + " more") +
                    " any more");
}
