// The same strokes drawn, and the same picture written, by Cairo.
#include "../benchmarks.h"
#include "../pad.h"

#include <cairo.h>

namespace bench {
namespace {

struct SurfaceDeleter
{
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

std::shared_ptr<Surface> surfaceOf(const QSize& size)
{
    return std::make_shared<Surface>(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size.width(), size.height()));
}

void draw(cairo_surface_t* surface, const Segment& segment)
{
    cairo_t* const context = cairo_create(surface);
    cairo_set_source_rgb(context, 0, 0, 0);
    cairo_set_line_width(context, segment.width);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    cairo_move_to(context, segment.line.x1(), segment.line.y1());
    cairo_line_to(context, segment.line.x2(), segment.line.y2());
    cairo_stroke(context);
    cairo_destroy(context);
}

void draw(cairo_surface_t* surface, const Signature& signature)
{
    for (const std::vector<Segment>& stroke : signature.segments) {
        for (const Segment& segment : stroke)
            draw(surface, segment);
    }
}

} // namespace

void registerCairo()
{
    const Model& model = models.front();
    for (const QSize& size : canvasSizes) {
        compare("pen move, against Cairo/" + nameOf(size), {}, {.rounds = 15}, [&model, size] {
            const auto signature = std::make_shared<Signature>(model, size);
            const auto surface = surfaceOf(size);
            const auto cairo = [signature, surface](std::vector<double>& times) {
                const double start = threadTime();
                draw(surface->get(), *signature);
                times.push_back((threadTime() - start) / signature->moves);
            };
            return Sides{movesOf(std::make_shared<Pad>(Library::shipped(), model, size), signature), cairo};
        });
    }
    for (const QSize& size : canvasSizes) {
        compare("transparent PNG file, against Cairo/" + nameOf(size), {}, {.rounds = 9}, [&model, size] {
            const auto work = std::make_shared<SignedPad>(model.name, size);
            const auto surface = surfaceOf(size); // transparent where nothing is drawn
            draw(surface->get(), work->signature);
            const auto library = [work] {
                require(savePng(work->pad, L"library.png"), "the signature is not saved");
            };
            const auto cairo = [surface] {
                require(cairo_surface_write_to_png(surface->get(), "cairo.png") == CAIRO_STATUS_SUCCESS,
                        "Cairo does not save");
            };
            return Sides{repeated(2, library), repeated(2, cairo)};
        });
    }
}

} // namespace bench
