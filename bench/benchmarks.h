// What is measured; each function registers its benchmarks.
#pragma once

namespace bench {

void registerPen();     // samples: drawing, log, repaint
void registerExports(); // bounding box, pictures, vectors, streams
void registerStore();   // stored points
void registerWaiting(); // locks, starts, polling threads
void registerGrowth();  // longer signatures, larger canvases
void registerCairo();   // the same strokes drawn by another library

// Writes the segments of the signature on every canvas, for peers in other languages.
void writeStrokes(const char* path);

} // namespace bench
