// All element shapes of the library, namespace elfes.
#pragma once

#include "elements/shape_edge.h"
#include "elements/shape_faceQ.h"
#include "elements/shape_faceT.h"
#include "elements/shape_hexa.h"
#include "elements/shape_pyramid.h"
#include "elements/shape_tetra.h"
#include "elements/shape_wedge.h"
