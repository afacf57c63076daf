#include "tools/ModelOptions.h"

#include "import/MeshImport.h"

#include "tools/Command.h"
#include "tools/Console.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <utility>

using CommandOptions::addChoice;
using CommandOptions::addScale;
using CommandOptions::addUp;
using CommandOptions::addValue;
using CommandOptions::inRange;

// ---- models --------------------------------------------------------------------------------------------------------

namespace {

/// What options say about one model, or about all.
struct ModelChoices {
    PlacementRequest placement;
    std::optional<float> scale;
    std::optional<std::string> up;
};

struct CommandLine {
    std::vector<std::pair<std::string, ModelChoices>> models;
    /// Of all models.
    ModelChoices common;
};

/// The models of the command line. Options of single models belong to the model before them; before the first model and
/// after the file to write they belong to all.
CommandLine readCommandLine(const CLI::App& app, const std::vector<std::string>& paths, const ModelOptions& options) {
    CommandLine line;
    std::size_t path = 0;
    // Of the values of each option, which is next.
    std::map<std::string, std::size_t> taken;
    for (const CLI::Option* const option : app.parse_order()) {
        const bool is_model = path != 0 && path < paths.size();
        ModelChoices& choices = is_model ? line.models.back().second : line.common;
        const std::string name = option->get_name();
        if (option->get_positional()) {
            if (path + 1 < paths.size()) line.models.push_back({paths[path], {}});
            ++path;
        } else if (name == "--at") {
            choices.placement.at = parsePoint(name, options.at[taken[name]++]);
        } else if (name == "--rotate") {
            choices.placement.rotate = parseRotation(name, options.rotate[taken[name]++]);
        } else if (name == "--on-ground") {
            choices.placement.on_ground = true;
        } else if (name == "--scale") {
            choices.scale = options.scale[taken[name]++];
        } else if (name == "--up") {
            choices.up = options.up[taken[name]++];
        }
    }
    return line;
}

/// `own` where it says something, else `common`.
ModelRequest makeRequest(const std::string& path, const ModelChoices& own, const ModelChoices& common) {
    ModelRequest request;
    request.path = path;
    request.scale = own.scale.value_or(common.scale.value_or(request.scale));
    request.up = own.up.value_or(common.up.value_or(request.up));
    request.placement.at = own.placement.at ? own.placement.at : common.placement.at;
    request.placement.rotate = own.placement.rotate ? own.placement.rotate : common.placement.rotate;
    request.placement.on_ground = own.placement.on_ground || common.placement.on_ground;
    return request;
}

/// A line of a placement file after the path: the options of the command line for one model.
class PlacementLine {
  public:
    PlacementLine(std::vector<std::string> all_words, ModelRequest& filled_model)
        : words(std::move(all_words)), model(filled_model) {}

    void read() {
        for (at = 1; at < words.size(); ++at) {
            const std::string option = words[at];
            if (option == "--at")
                model.placement.at = parsePoint(option, takeValue());
            else if (option == "--rotate")
                model.placement.rotate = parseRotation(option, takeValue());
            else if (option == "--on-ground")
                model.placement.on_ground = true;
            else if (option == "--scale")
                model.scale = readScale();
            else if (option == "--up")
                model.up = readUp();
            else if (option == "--name")
                model.name = takeValue();
            else
                throw UsageError("unknown option '" + option + "'");
        }
    }

  private:
    std::string takeValue() {
        const std::string option = words[at];
        if (++at == words.size()) throw UsageError(option + ": a value is missing");
        return words[at];
    }

    float readScale() {
        const std::string text = takeValue();
        float scale = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), scale);
        if (error != std::errc() || end != text.data() + text.size() || !(scale > 0))
            throw UsageError("--scale: a number above 0 is needed, not '" + text + "'");
        return scale;
    }

    std::string readUp() {
        const std::string up = takeValue();
        const std::vector<std::string>& axes = getUpAxes();
        if (std::find(axes.begin(), axes.end(), up) == axes.end()) throw UsageError("--up: '" + up + "' is no axis");
        return up;
    }

    std::vector<std::string> words;
    ModelRequest& model;
    std::size_t at = 0;
};

/// The models of a placement file, whose paths are relative to the file.
std::vector<ModelRequest> readPlacementFile(const std::string& path, const ModelChoices& common) {
    std::vector<ModelRequest> models;
    std::string text;
    try {
        text = FileUtils::withoutByteOrderMark(MappedFile(path).getText());
    } catch (...) {
        throw makeFailureOf(path);
    }
    std::size_t number = 0;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        ++number;
        const std::vector<std::string> words = splitWords(std::string_view(text).substr(begin, end - begin));
        begin = end + 1;
        if (words.empty()) continue;
        const bool is_absolute = words[0].find_first_of("/\\") == 0 || (words[0].size() > 1 && words[0][1] == ':');
        ModelRequest model = makeRequest(is_absolute ? words[0] : Text::folderOf(path) + words[0], {}, common);
        try {
            PlacementLine(words, model).read();
        } catch (const UsageError& e) {
            throw Failure(path + ": line " + std::to_string(number) + ": " + e.what());
        }
        models.push_back(std::move(model));
    }
    if (models.empty()) throw Failure(path + ": names no model");
    return models;
}

} // namespace

std::vector<ModelRequest> findModels(const CLI::App& app, const std::vector<std::string>& paths,
                                     const ModelOptions& options) {
    const CommandLine line = readCommandLine(app, paths, options);
    std::vector<ModelRequest> models;
    for (const auto& [path, choices] : line.models)
        models.push_back(makeRequest(path, choices, line.common));
    if (!options.placement_file.empty()) {
        const std::vector<ModelRequest> more = readPlacementFile(options.placement_file, line.common);
        models.insert(models.end(), more.begin(), more.end());
    }
    if (models.empty())
        throw UsageError("a model is missing; '" + app.get_name() + "' needs models and then the file to write");
    return models;
}

// ---- the scene -----------------------------------------------------------------------------------------------------

SceneSettings getSceneSettings(const CLI::App& app, const ModelOptions& options) {
    SceneSettings scene = options.scene;
    if (!options.camera.empty()) scene.camera = parsePoint("--camera", options.camera);
    if (!options.target.empty()) scene.target = parsePoint("--target", options.target);
    if (!options.sun.empty()) scene.sun = parsePoint("--sun", options.sun);
    if (scene.sun.x == 0 && scene.sun.y == 0 && scene.sun.z == 0) throw UsageError("--sun: 0,0,0 is no direction");
    if (options.no_ground || options.ground == "none") {
        scene.ground = Ground::none;
    } else if (options.ground != "auto") {
        const std::string& text = options.ground;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), scene.ground_size);
        constexpr double max_size = 1e9;
        if (error != std::errc() || end != text.data() + text.size() || !(scene.ground_size > 0) ||
            scene.ground_size > max_size)
            throw UsageError("--ground: auto, none or a size above 0 is needed, not '" + text + "'");
        scene.ground = Ground::of_size;
    }
    scene.view_chosen = app.count("--azimuth") + app.count("--elevation") != 0;
    return scene;
}

std::vector<std::string> findIdleOptions(const CLI::App& app, const ModelOptions& options,
                                         const std::vector<ModelRequest>& models) {
    std::vector<std::string> idle;
    const auto note = [&](const char* option, bool without_effect, const char* why) {
        if (without_effect && app.count(option) != 0) idle.push_back(option + (" has no effect " + std::string(why)));
    };
    note("--sun", options.scene.light != "sunsky", "without --light sunsky");
    note("--light-strength", options.scene.light != "uniform", "without --light uniform");
    note("--azimuth", options.scene.camera.has_value(), "with --camera");
    note("--elevation", options.scene.camera.has_value(), "with --camera");
    note("--ground", options.no_ground, "with --no-ground");
    const bool all_vmmesh = std::all_of(models.begin(), models.end(), [](const ModelRequest& model) {
        return Velmar::getMeshFormat(model.path) == "vmmesh";
    });
    note("--scale", all_vmmesh, "on vmmesh files");
    return idle;
}

const char* const ground_left_out =
    "the camera is below the models, so there is no ground; --ground SIZE makes one all the same";

// ---- the options ---------------------------------------------------------------------------------------------------

namespace {

void addPlacementOptions(CLI::App& app, ModelOptions& options) {
    app.option_defaults()->group("Models");
    // One value for each time that the option is given.
    const auto repeat = [](CLI::Option* option) { return option->allow_extra_args(false); };
    repeat(app.add_option("--at", options.at,
                          "Place the model before this option there, in metres; z is the height. Given before the "
                          "first model or after the file to write, this and the next four options are for all models.")
               ->type_name("X,Y,Z"));
    repeat(app.add_option("--rotate", options.rotate,
                          "Turn that model around its origin: around the height, or around x, y and then z.")
               ->type_name("DEGREES|X,Y,Z"));
    app.add_flag("--on-ground", options.on_ground,
                 "Lift or lower that model so that its lowest point has the height of --at, or 0.");
    repeat(addScale(app, options.scale,
                    "Multiplies its positions, except those of a vmmesh file. The scene is in metres."));
    repeat(addUp(app, options.up,
                 "Which axis of its file is its height; auto takes y for .obj and z for other mesh files."));
    app.add_option("--placement", options.placement_file,
                   "Read models from this text file too: one a line, followed by its own --at, --rotate, --on-ground, "
                   "--scale, --up and --name. Paths are relative to the file, # begins a comment, and a path with "
                   "blanks is put in double quotes.")
        ->type_name("FILE");
    addValue(
        app, "--ground", options.ground, "auto|none|SIZE",
        "The square below the models: its side in metres, or auto for a large one that is left out if it would hide "
        "the models from the camera.");
    app.add_flag("--no-ground", options.no_ground, "The same as --ground none.");
}

void addCameraOptions(CLI::App& app, ModelOptions& options) {
    app.option_defaults()->group("Camera");
    app.add_option("--camera", options.camera, "Where the camera is. Without it the camera sees all of the models.")
        ->type_name("X,Y,Z");
    app.add_option("--target", options.target, "What it looks at. (the middle of the models)")->type_name("X,Y,Z");
    SceneSettings& scene = options.scene;
    addValue(app, "--azimuth", scene.azimuth, "DEGREES",
             "The side from which the camera looks at the models: 0 in front, 90 to the right.")
        ->check(inRange(-360, 360));
    addValue(app, "--elevation", scene.elevation, "DEGREES", "How high above the horizon it is.")
        ->check(inRange(-89, 89));
    addValue(app, "--fov", scene.fov, "DEGREES",
             "Field of view across the width. The camera moves back as far as it must.")
        ->check(inRange(1, 170));
}

void addLightOptions(CLI::App& app, ModelOptions& options) {
    app.option_defaults()->group("Light");
    addChoice(app, "--light", options.scene.light, {"sunsky", "uniform", "none"}, "What lights the scene.");
    app.add_option("--sun", options.sun, "Direction towards the sun. (-1,-1,1)")->type_name("X,Y,Z");
    addValue(app, "--light-strength", options.scene.light_strength, "FACTOR", "Of the uniform light.")
        ->check(inRange(0, 1e12));
}

void addImageOptions(CLI::App& app, SceneSettings& scene) {
    app.option_defaults()->group("Image");
    constexpr double max_size = 1000000;
    addValue(app, "--width", scene.width, "PIXELS", "Width of the image.")->check(inRange(1, max_size));
    addValue(app, "--height", scene.height, "PIXELS", "Height of the image.")->check(inRange(1, max_size));
    addValue(app, "--samples", scene.halt_samples, "N", "Stop at so many samples per pixel; 0 for no such limit.")
        ->check(inRange(0, 1e9));
    addValue(app, "--time", scene.halt_time, "SECONDS", "Stop after so long; 0 for no such limit.")
        ->check(inRange(0, 1e9));
    addChoice(app, "--tone-mapping", scene.tone_mapping, {"linear", "reinhard", "camera", "filmic"},
              "How light becomes an image.");
    addValue(app, "--brightness", scene.brightness, "FACTOR", "Brightens the image, or below 1 darkens it.")
        ->check(inRange(1e-9, 1e9));
}

} // namespace

CLI::Option* addModelPaths(CLI::App& app, std::vector<std::string>& paths, const char* name, const char* description) {
    // One file is enough with a placement file.
    return app.add_option(name, paths, description)->required()->expected(1, CLI::detail::expected_max_vector_size);
}

void addModelOptions(CLI::App& app, ModelOptions& options) {
    addPlacementOptions(app, options);
    addCameraOptions(app, options);
    addLightOptions(app, options);
    addImageOptions(app, options.scene);
}
