#pragma once

#include <benchmark/benchmark.h>

namespace BenchSupport {

/**
 * Runs the benchmarks that the command line selects (--benchmark_filter and
 * the like). The caller makes the Qt application first, since most of what
 * is measured needs one.
 */
inline int runBenchmarks(int &argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace BenchSupport
