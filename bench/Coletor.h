#pragma once
// Keeps each benchmark's time per iteration so that a program can print ratios against the
// floors measured in the same run.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace bench {

struct Coletor : benchmark::ConsoleReporter {
    std::map<std::string, double> tempos;
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &r : runs) tempos[r.benchmark_name()] = r.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
    // "a / b   ratio", when both ran.
    void razao(const char *a, const char *b)
    {
        if (tempos.count(a) && tempos.count(b) && tempos[b] > 0)
            std::printf("%-70s %8.2f\n", (std::string(a) + " / " + b).c_str(), tempos[a] / tempos[b]);
    }
};

} // namespace bench
