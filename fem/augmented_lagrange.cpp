// The augmented Lagrange loop is a template over the constraint models; this unit
// checks that its header stands on its own.
#include "fem/augmented_lagrange.h"
