#include "scene/reading/ElementVisitor.h"
#include "scene/reading/ForeignParts.h"
#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/DocumentFiles.h"
#include "tools/DocumentReferences.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace Velmar;

namespace {

struct MergeOptions {
    std::vector<std::string> paths;
    bool quiet = false;
};

/// Among the nodes of another document, a UID that names nothing would name something.
void requireBound(SceneNodeRoot& scene, const std::string& path) {
    visitReferences(scene, [&](const NodeReference& reference) {
        if (!reference.is_bound)
            throw Failure(path + ": " + describeNode(*reference.holder) + ": " + reference.element + " is " +
                          std::to_string(reference.uid) + ", and there is no such node that fits");
    });
}

/// The nodes of several documents, with UIDs of which none occurs twice.
class MergedScene {
  public:
    /// Adds the nodes of the document at `path`. Throws `Failure`.
    void add(SceneNodeRoot& scene, const std::string& path) {
        ++document;
        requireBound(scene, path);
        moveUIDs(scene, path);
        std::vector<std::string> left_out;
        for (const Reference<SceneNode>& node : scene.children()) {
            if (isSingle(node->getType())) {
                const auto [owner, is_new] = owners.try_emplace(node->getType(), document);
                // A document that has several keeps them.
                if (!is_new && owner->second != document) {
                    left_out.emplace_back(getElement(*node));
                    continue;
                }
            }
            last_uid = std::max(last_uid, node->getUID());
            nodes.push_back(node);
        }
        if (left_out.empty()) return;
        std::string text = path + ": left out, because a document before it has one: ";
        for (const std::string& element : left_out)
            text.append(&element == &left_out.front() ? "" : ", ").append(element);
        notes.push_back(text);
    }

    /// The scene of all that was added. Nothing can be added afterwards.
    const SceneNodeRoot& finish() {
        merged->addFirstChildNodes(nodes);
        return *merged;
    }
    const std::vector<std::string>& getNotes() const { return notes; }

  private:
    /// Moves them after those that are there already.
    void moveUIDs(SceneNodeRoot& scene, const std::string& path) const {
        UID first = invalid_uid;
        UID last = 0;
        for (const Reference<SceneNode>& node : scene.children()) {
            first = std::min(first, node->getUID());
            last = std::max(last, node->getUID());
        }
        if (first > last_uid) return;
        TraversalState state(TraversalKind::OffsetUIDs, String(), String());
        state.uid_offset = last_uid + 1 - first;
        if (last >= invalid_uid - state.uid_offset) throw Failure(path + ": there are no UIDs left for its nodes");
        for (const Reference<SceneNode>& node : scene.children()) {
            node->traverse(state);
            traverseForeignParts(*node, state);
        }
    }

    Reference<SceneNodeRoot> merged{new SceneNodeRoot};
    Vector<Reference<SceneNode>> nodes;
    UID last_uid = root_uid;
    /// Of the kinds that there is one of: the document that it is from.
    std::map<NodeType, std::size_t> owners;
    std::size_t document = 0;
    std::vector<std::string> notes;
};

void merge(const MergeOptions& options) {
    if (options.paths.size() < 3) throw UsageError("two documents are needed, and then the one to write");
    const std::string& result = options.paths.back();
    const std::size_t count = options.paths.size() - 1;
    Progress progress(options.quiet);
    OutputFile output(result);
    MergedScene merged;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string& path = options.paths[i];
        progress.show("reading " + Text::fileName(path), static_cast<double>(i) / static_cast<double>(count));
        const Reference<SceneNodeRoot> scene = readDocument(path);
        rebaseFiles(*scene, path, output.getFinalPath());
        merged.add(*scene, path);
    }
    progress.show("writing " + Text::fileName(result));
    const SceneNodeRoot& scene = merged.finish();
    writeDocument(scene, output);
    const std::uint64_t size = output.commit();
    progress.clear();
    if (options.quiet) return;
    for (const std::string& note : merged.getNotes())
        printNote(note);
    std::printf("%s: %s of %zu documents (%s)\n", Text::printable(result).c_str(),
                Text::count(scene.children().size(), "node", "nodes").c_str(), count, Text::size(size).c_str());
}

} // namespace

Command addMergeCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("merge", "Puts scene documents together into one.");
    const auto options = std::make_shared<MergeOptions>();
    app->add_option("IN... OUT", options->paths,
                    "The scene documents, and then the one to write. An existing file is replaced. Mesh files and "
                    "others stay where they are.")
        ->required()
        ->expected(3, CLI::detail::expected_max_vector_size);
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success: no summary, notes or progress");
    app->footer("Camera, render settings, tone mapping and background are those of the first document that has them. "
                "UIDs are counted on from those of the documents before. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { merge(*options); }};
}
