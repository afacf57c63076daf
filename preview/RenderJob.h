#pragma once

#include "preview/PreparedRender.h"
#include "preview/World.h"
#include "preview/velmarpreview.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace Preview {

/// One render, on threads of its own: reads the scene, fills the image store pass by pass and writes pictures. A pass
/// takes one sample of each pixel of a layer; before the first, a coarse pass fills blocks of pixels.
///
/// The member functions are called from the host's threads, one at a time for those that change the state. None throws.
class RenderJob {
  public:
    /// Both must outlive the job.
    RenderJob(const Velmar::SceneNodeRoot& scene_, Velmar::RenderBuffer& buffer_);
    /// Ends the render without a picture.
    ~RenderJob();
    RenderJob(const RenderJob&) = delete;
    RenderJob& operator=(const RenderJob&) = delete;

    // Each returns whether there was something to do.

    bool start();
    /// When it returns, no thread writes to the image store.
    bool pause();
    bool resume();
    /// Ends the render and waits for its picture.
    bool stop();
    /// Begins anew with the scene as it is now. What was built of unchanged meshes is kept.
    bool update();

    /// Waits until the render is finished or failed; see VelmarPreview_Wait.
    bool wait(double seconds);
    VelmarPreviewProgress getProgress() const;
    bool getPixels(float* pixels, std::size_t count) const;
    bool getBytes(std::uint8_t* bytes, std::size_t count) const;
    bool getChannel(const std::string& name, float* values, std::size_t count) const;
    bool setOption(int option, double value);
    void setImagePath(std::string path);
    /// Writes the picture so far. Returns whether that worked; a reason is reported.
    bool writeImage(const std::string& path) const;

  private:
    using Clock = std::chrono::steady_clock;

    /// What a thread does next: it writes the picture that is due, beside the threads that render, or renders a tile.
    struct Ticket {
        bool picture;
        /// 0 for the coarse one.
        std::uint32_t pass;
        PixelBox tile;
    };

    void run();
    bool prepare();
    void renderAll();
    void work();
    std::optional<Ticket> nextTile();
    void finishTile();
    bool isHalted() const;
    void savePicture();
    void end(bool with_picture);
    double activeSeconds() const;
    std::shared_ptr<const PreparedRender> getRender() const;
    void setState(int new_state);
    unsigned chooseThreads(const Velmar::SceneNodeRenderSettings* settings) const;

    const Velmar::SceneNodeRoot& scene;
    Velmar::RenderBuffer& buffer;

    // Options, guarded by `mutex`.
    std::uint64_t seed = 0;
    unsigned wanted_threads = 0;
    double wanted_samples = 0.0;
    double wanted_seconds = 0.0;
    std::optional<std::string> image_path;

    std::thread control;
    std::unique_ptr<World> world;
    std::shared_ptr<const PreparedRender> render;
    unsigned thread_count = 1;
    double halt_seconds = 0.0;
    double halt_samples = 0.0;
    double save_period = 1800.0;

    std::atomic<bool> stopping{false};
    /// By a thread that had to end.
    std::atomic<bool> broken{false};
    mutable std::mutex mutex;
    std::condition_variable changed;
    int state = VELMAR_PREVIEW_IDLE;
    bool paused = false;
    bool halted = false;
    bool save_at_end = true;
    bool picture_due = false;
    std::uint32_t pass = 0;
    std::size_t next_tile = 0;
    std::size_t outstanding = 0;
    std::uint64_t pictures = 0;
    /// Seconds after the beginning.
    double last_saved = 0.0;
    Clock::time_point begun;
    Clock::time_point pause_begun;
    Clock::time_point ended;
    Clock::duration paused_for{};
};

} // namespace Preview
