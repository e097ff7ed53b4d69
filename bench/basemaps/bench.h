// The base map benchmarks: one function per map kind, each in its own file of this
// folder, called by main.cpp. Each prints its figures and returns 0, or 1 when a
// figure misses its target or the run fails.
//
// A function declared weak here may be left out of the build: main.cpp calls only
// those that are linked in. Add the declaration of a new one here and its call in
// main.cpp.
#pragma once

// The number of timed runs per figure (the first argument of the program; 15 by
// default); each figure reports the median.
int BenchRuns();

// BBM vector maps (bbm_bench.cpp): a map of one million vertices drawn on an image
// of 1600 x 1000 pixels.
int BenchBbm();

// Raster images (by the raster layer's developer).
int BenchRaster() __attribute__((weak));

// Shapefiles (shape_bench.cpp): 20,000 lines of 50 points written, opened as a layer
// and drawn whole and in a small window.
int BenchShape();

// The catalogue (catalog_bench.cpp): the pre-scan of a project of 20 maps.
int BenchCatalog() __attribute__((weak));
