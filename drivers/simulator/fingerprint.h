// Fingerprints that the simulated sensor delivers: synthetic ridge patterns, and grey pictures from files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

// What the sensor delivers: one grey byte a pixel, row after row; ridges are dark.
constexpr int FingerprintWidth = 208;
constexpr int FingerprintHeight = 288;
constexpr std::size_t FingerprintSize = std::size_t{FingerprintWidth} * FingerprintHeight;

enum class RidgePattern
{
    Loop,
    Whorl,
    Arch,
};

// "loop", "whorl" or "arch".
std::optional<RidgePattern> ridgePatternByName(std::string_view name);

// FingerprintSize bytes. A pattern and a seed give the same bytes on every machine.
std::vector<unsigned char> syntheticFingerprint(RidgePattern pattern, std::uint64_t seed);

// A grey PGM picture (P5 or P2, maxval 255), centred on the sensor: cut where larger, filled up with white
// where smaller. False with "name: reason".
bool parseGreyMap(std::string_view content, const std::string& name, std::vector<unsigned char>& pixels,
                  std::string& error);
bool readGreyMap(const std::string& path, std::vector<unsigned char>& pixels, std::string& error);

// The sensor's picture as a PGM file (P5).
std::string formatGreyMap(const std::vector<unsigned char>& pixels);

} // namespace simulator
