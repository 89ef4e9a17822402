// Elasto-plastic scalar laws; they share their header with the elasto-plastic rods.
#pragma once

#include <orv/fem/law_rod_ep.h>
