#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What the person asked for, and what they get without asking.
struct SceneSettings {
    std::int32_t width = 1280;
    std::int32_t height = 720;
    /// 0: no limit.
    double halt_samples = 500;
    /// Seconds; 0: no limit.
    double halt_time = 0;
    /// Degrees, across the width of the image.
    double fov = 40;
    /// Degrees around the models, from in front of them to their right.
    double azimuth = 30;
    /// Degrees above the horizon.
    double elevation = 20;
    /// "sunsky", "uniform" or "none".
    std::string light = "sunsky";
    /// Towards the sun.
    std::vector<double> sun = {-1, -1, 1};
    double light_strength = 1;
    bool ground = true;
    /// "linear", "reinhard", "camera" or "filmic".
    std::string tone_mapping = "reinhard";
    /// A factor for the image, whatever the tone mapping.
    double brightness = 1;
};
