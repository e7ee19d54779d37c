// Whether a sample costs the same late in a long signature, and on a large canvas.
#include "benchmarks.h"
#include "pad.h"

namespace bench {
namespace {

Sides drawing(const QSize& size, int points)
{
    const Model& model = modelNamed("K210");
    const auto signature = std::make_shared<Signature>(model, size);
    const auto pad = std::make_shared<Pad>(Library::shipped(), model, size);
    const auto count = pad->function<int(int)>("GetTotalPacketsNumber");
    while (count(pad->deviceType()) < points)
        pad->write(*signature);
    return {movesOf(pad, signature), segmentsOf(std::make_shared<QImage>(blankImage(size)), signature)};
}

} // namespace

void registerGrowth()
{
    for (const int points : {1'000, 10'000, 100'000, 1'000'000, 10'000'000}) {
        compare("sample after " + std::to_string(points) + " points", {.ratio = 1.25},
                {.rounds = 21, .repetitions = 1}, [points] { return drawing(QSize(400, 200), points); });
    }
    for (const QSize& size : {QSize(447, 224), QSize(1000, 500), QSize(1414, 707), QSize(2000, 1000),
                              QSize(2828, 1414), QSize(4000, 2000)}) {
        compare("sample on " + nameOf(size), {.ratio = 1.25}, {.rounds = 21, .repetitions = 1},
                [size] { return drawing(size, 0); });
    }
}

} // namespace bench
