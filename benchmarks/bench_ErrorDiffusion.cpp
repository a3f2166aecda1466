#include "benchmarks/BenchmarkImages.h"
#include "bilevel/ErrorDiffusion.h"

#include <QPainter>

#include <benchmark/benchmark.h>

namespace {

const QSize pageSize(1728, 2292);
const QPoint position(114, 146);

QImage samplePicture(const benchmark::State& state)
{
    const QImage picture = colorPicture({1500, 2000});
    return state.range(0) == 0 ? picture : picture.convertToFormat(QImage::Format_Grayscale8);
}

void ditherByQt(benchmark::State& state)
{
    const QImage picture = samplePicture(state);
    for (auto _ : state) {
        QImage page(pageSize, QImage::Format_ARGB32_Premultiplied);
        page.fill(Qt::white);
        QPainter painter(&page);
        painter.drawImage(position, picture);
        painter.end();
        benchmark::DoNotOptimize(page.convertToFormat(QImage::Format_Mono, Qt::MonoOnly));
    }
}

void ditherByUs(benchmark::State& state)
{
    const QImage picture = samplePicture(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            ErrorDiffusion::dithered(picture, picture.rect(), pageSize, position));
    }
}

// 0 for a colour picture, 1 for a grey one.
BENCHMARK(ditherByQt)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);
BENCHMARK(ditherByUs)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);

} // namespace
