#pragma once

#include <memory>

namespace Velmar {

/// Has the C functions of this thread read and write numbers with a point, whatever the host's locale says, for as long
/// as the object.
class PlainNumericLocale {
  public:
    PlainNumericLocale();
    ~PlainNumericLocale();
    PlainNumericLocale(const PlainNumericLocale&) = delete;
    PlainNumericLocale& operator=(const PlainNumericLocale&) = delete;

  private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace Velmar
