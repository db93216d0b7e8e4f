// Frames encoded and decoded per second.
#include "kolib/wire/FrameDecoder.h"

#include <benchmark/benchmark.h>

#include <numeric>

using namespace corvane::wire;

namespace {

Frame dataFrame(std::int64_t length) {
    Frame frame{FrameType::Data, 1, 208, Bytes(static_cast<std::size_t>(length))};
    std::iota(frame.data.begin(), frame.data.end(), std::uint8_t{0});
    return frame;
}

void encoding(benchmark::State& state) {
    const Frame frame = dataFrame(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(encodeFrame(frame));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(encoding)->Arg(3)->Arg(64)->Arg(255);

void decoding(benchmark::State& state) {
    const Bytes bytes = encodeFrame(dataFrame(state.range(0)));
    std::int64_t frames = 0;
    FrameDecoder decoder([&](Frame&&, ByteView) { ++frames; }, [](ByteView) {});
    for (auto _ : state)
        decoder.feed(bytes);
    state.SetItemsProcessed(frames);
}
BENCHMARK(decoding)->Arg(3)->Arg(64)->Arg(255);

} // namespace

BENCHMARK_MAIN();
