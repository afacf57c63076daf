// A host in C++ for the Microsoft ABI that uses velmar.hpp: the library, made by another compiler, reports its failures
// by statuses, and the header makes exceptions of the host's own form of them. The standard library's headers are those
// of GCC, compiled for this ABI; what they need of their library is defined here.

#include <cstdio>
#include <cstdlib>
#include <velmar.hpp>

namespace std {
exception::~exception() noexcept {}
const char* exception::what() const noexcept {
    return "exception";
}
bad_alloc::~bad_alloc() noexcept {}
const char* bad_alloc::what() const noexcept {
    return "bad allocation";
}
void __throw_bad_alloc() {
    throw bad_alloc();
}
void __throw_bad_array_new_length() {
    throw bad_alloc();
}
void __throw_length_error(const char*) {
    throw bad_alloc();
}
void __throw_logic_error(const char*) {
    throw bad_alloc();
}
void __throw_bad_function_call() {
    throw bad_alloc();
}
} // namespace std

namespace {

int failures = 0;

void check(bool is_true, const char* what) {
    if (is_true) return;
    ++failures;
    puts(what);
}

struct Witness {
    explicit Witness(int& count_) : count(count_) {}
    ~Witness() { ++count; }
    int& count;
};

/// Expects an exception of this class with a text that contains `text`, and the frames in between cleaned up.
template <class Expected, class Call>
void expectError(const char* text, Call call) {
    int destroyed = 0;
    bool caught = false;
    try {
        const Witness witness(destroyed);
        call();
    } catch (const Expected& error) {
        caught = error.message().find(text) != std::string::npos && error.message() == error.what();
    } catch (const velmar::Error& error) {
        puts(error.what());
    }
    check(caught && destroyed == 1, text);
}

void makeScene() {
    velmar::Scene scene;
    velmar::RenderSettings settings = scene.add(velmar::RenderSettings(640, 480));
    velmar::Camera camera = scene.add(velmar::Camera());
    camera.setPosition({0, -8, 2});
    camera.lookAt({0, 0, 1});
    check(settings.height() == 480, "a setting is read back");
    velmar::Mesh mesh("Square");
    const float corners[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    const std::uint32_t face[] = {0, 1, 2, 3};
    mesh.addVertices(corners);
    mesh.addQuads(face);
    check(mesh.build() == 1, "a mesh is built");
    check(mesh.vertices().size() == 12 && mesh.quads()[2] == 2, "a mesh is read back");
    const velmar::Material red("Red a name that doesn't fit into the string itself", {0.8, 0.1, 0.1});
    velmar::setLineHandler([](bool, std::string_view) {});
    const velmar::Model model = scene.add(velmar::Model("Square", mesh, {red}));
    velmar::setLineHandler({});
    check(model.materials()[0].name() == red.name(), "a name is read back");
    scene.add(red);
    scene.add(mesh);
    scene.write("host.xml");
    check(velmar::Mesh::load("nowhere.obj").isClosed(), "nothing is loaded from nowhere");
}

void run() {
    expectError<velmar::FileError>("nowhere.obj", makeScene);
    expectError<velmar::FileError>("Failed to open file", [] { velmar::Scene().write("missing/scene.xml"); });
    expectError<velmar::BadArgumentError>("isn't UTF-8", [] { velmar::Mesh("\xff"); });
    expectError<velmar::BadArgumentError>("between 0 and pi", [] { velmar::Camera().setFieldOfView(0); });
    expectError<velmar::MeshError>("Unsupported mesh format", [] { velmar::Mesh::load("image.png"); });
    expectError<velmar::ClosedError>("was closed", [] {
        velmar::Scene scene;
        scene.close();
        scene.addSunSky();
    });
    // This folder has none.
    expectError<velmar::RendererError>("Failed to load Velmar SDK DLL",
                                       [] { velmar::Renderer renderer{velmar::Scene()}; });
    // By its bases too.
    expectError<velmar::Error>("was closed", [] {
        velmar::Scene scene;
        scene.close();
        scene.addSunSky();
    });
}

} // namespace

/// Nothing is destroyed at the end.
extern "C" int atexit(void (*)()) {
    return 0;
}

extern "C" void start() {
    run();
    exit(failures);
}
