#pragma once

#include "preview/Vec.h"

#include "scene/Rotations.h"
#include "scene/nodes/TransformPath.h"

#include <array>
#include <span>
#include <string>
#include <vector>

namespace Preview {

/// A linear map in double precision, row after row.
using Matrix3 = std::array<double, 9>;

constexpr Matrix3 identity_matrix = {1, 0, 0, 0, 1, 0, 0, 0, 1};

/// The static rotation of a model times its scale, or the identity for null. A kind of rotation that isn't known is
/// reported and taken as the identity.
Matrix3 baseMatrix(const Velmar::Rotation* rotation, double scale);

/// The placement of an object through the exposure: translation times rotation times scale and shear times base, with
/// positions, rotations and shears mixed between key frames. Times are normalised: 0 is the start of the exposure, 1
/// its end.
class Motion {
  public:
    /// At rest at the origin.
    Motion() = default;

    /// The motion along `frames` of an object that is first transformed by `base`. No frames at all leave the object at
    /// the origin. Frames that don't cover the times 0 to 1 in increasing order leave it at the first one, and
    /// `complaint` says so; it is empty otherwise.
    Motion(std::span<const Velmar::KeyFrame> frames, const Matrix3& base, std::string& complaint);

    bool isMoving() const { return !stations.empty(); }

    Affine at(double time) const;

    /// How many equal parts of the exposure follow the motion well when the placements at their ends are mixed
    /// linearly; 1 at rest and at most 128.
    unsigned countSegments() const;

  private:
    struct Station {
        std::array<double, 4> rotation;
        Matrix3 shape;
        std::array<double, 3> position;
        double time;
    };

    static Station makeStation(const Velmar::KeyFrame& frame, const Matrix3& base);
    static Affine place(const Station& station);

    /// Empty at rest.
    std::vector<Station> stations;
    Affine rest;
};

} // namespace Preview
