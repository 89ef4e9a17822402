// Minimal run records with the common hooks and error fields, for tests that drive an
// engine solver directly, without a public solver around it.
#pragma once

#include <orv/fem/solver_base.h>

namespace orv {
namespace test {

struct run_settings {
    ORV_FEM_SETTINGS_HOOKS
};
struct run_data {
    ORV_FEM_DATA_ERRORS
};

}  // namespace test
}  // namespace orv
