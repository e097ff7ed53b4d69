// The benchmarks of the base maps, one function each, run in turn by main.cpp.
// Each prints its figures and returns 0, or not 0 when it could not run.
#pragma once

// A 10,000 x 10,000 GeoTIFF with overviews drawn at full extent, at one image
// pixel to a screen pixel, and zoomed in deeply (raster_bench.cpp).
int BenchRaster();

// The BBM vector maps (bbm_bench.cpp, with the BBM reader) are added here as
// int BenchBbm(); and called from main.cpp.
