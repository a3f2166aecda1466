#include "benchmarks/BenchmarkImages.h"
#include "fax/page/FaxImageBuilder.h"

#include <benchmark/benchmark.h>

namespace {

const QSize pageSize(1728, 2292);
const QRect wholePage(QPoint(0, 0), pageSize);
const QRect printableArea(QPoint(102, 98), QSize(1524, 2096));

// What becomes of every page after it has been rendered.
void compose(benchmark::State& state, const QImage& rendered, unsigned short angle,
             const QRect& area)
{
    for (auto _ : state) {
        FaxImageBuilder page(rendered);
        page.rotate(angle).scale(area.size(), true).fill(pageSize, area, Qt::AlignCenter);
        benchmark::DoNotOptimize(page.monochromize().image());
    }
}

void composeUpright(benchmark::State& state)
{
    compose(state, textPage(pageSize), 0, wholePage);
}

void composeTurned(benchmark::State& state)
{
    compose(state, textPage(pageSize.transposed()), 90, wholePage);
}

void composeWithMargins(benchmark::State& state)
{
    compose(state, textPage(printableArea.size()), 0, printableArea);
}

void composePicture(benchmark::State& state)
{
    compose(state, colorPicture({1728, 1296}), 0, wholePage);
}

BENCHMARK(composeUpright)->Unit(benchmark::kMillisecond);
BENCHMARK(composeTurned)->Unit(benchmark::kMillisecond);
BENCHMARK(composeWithMargins)->Unit(benchmark::kMillisecond);
BENCHMARK(composePicture)->Unit(benchmark::kMillisecond);

} // namespace
