#include "benchmarks/BenchmarkImages.h"
#include "bilevel/BilevelImage.h"

#include <QPainter>
#include <QTransform>

#include <benchmark/benchmark.h>

namespace {

// A4 pages as Ghostscript renders them, and the sizes they are squeezed to:
// {rendered width and height, fax width and height}.
const QSize sizes[][2] = {
    {{1728, 2386}, {1728, 2292}}, // fine
    {{3456, 4771}, {3456, 4572}}, // ultrafine
    {{2386, 1728}, {2292, 1728}}, // fine, turned by a quarter
    {{3312, 4572}, {1728, 4572}}, // superfine
};

void squeezeByQt(benchmark::State& state)
{
    const auto& [rendered, fax] = sizes[state.range(0)];
    const QImage page = textPage(rendered);
    for (auto _ : state) {
        benchmark::DoNotOptimize(page.scaled(fax, Qt::IgnoreAspectRatio, Qt::FastTransformation));
    }
}

void squeezeByUs(benchmark::State& state)
{
    const auto& [rendered, fax] = sizes[state.range(0)];
    const QImage page = textPage(rendered);
    for (auto _ : state) {
        benchmark::DoNotOptimize(BilevelImage::squeezed(page, fax));
    }
}

void quarterTurnByQt(benchmark::State& state)
{
    const QImage page = textPage(sizes[state.range(0)][1]);
    for (auto _ : state) {
        benchmark::DoNotOptimize(page.transformed(QTransform().rotate(90)));
    }
}

void quarterTurnByUs(benchmark::State& state)
{
    const QImage page = textPage(sizes[state.range(0)][1]);
    for (auto _ : state) {
        benchmark::DoNotOptimize(BilevelImage::turnedClockwise(page));
    }
}

// Half an inch of margin around an A4 page at fine resolution.
const QSize pageSize(1728, 2292);
const QRect printableArea(QPoint(102, 98), QSize(1524, 2096));

void placeByQt(benchmark::State& state)
{
    const QImage picture = textPage(printableArea.size());
    for (auto _ : state) {
        QImage page(pageSize, QImage::Format_ARGB32_Premultiplied);
        page.fill(Qt::white);
        QPainter painter(&page);
        painter.drawImage(printableArea.topLeft(), picture);
        painter.end();
        benchmark::DoNotOptimize(page.convertToFormat(QImage::Format_Mono, Qt::MonoOnly));
    }
}

void placeByUs(benchmark::State& state)
{
    const QImage picture = textPage(printableArea.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            BilevelImage::placed(picture, picture.rect(), pageSize, printableArea.topLeft()));
    }
}

BENCHMARK(squeezeByQt)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(squeezeByUs)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(quarterTurnByQt)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);
BENCHMARK(quarterTurnByUs)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);
BENCHMARK(placeByQt)->Unit(benchmark::kMillisecond);
BENCHMARK(placeByUs)->Unit(benchmark::kMillisecond);

} // namespace
