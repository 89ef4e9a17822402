// Version of the library.
#pragma once

namespace orv {
namespace fem {

/// The library's version.
class version {
public:
    /// "5.5.0.0": the version as it appears in the run banners.
    static const char* text();
};

}  // namespace fem
}  // namespace orv
