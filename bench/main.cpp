#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "Benchmarks.h"
#include "Folder.h"

namespace cqsurvey::bench {

namespace {

std::string Rounded(double value) {
    std::array<char, 32> text{};
    const int decimals = value < 10 ? 2 : value < 100 ? 1 : 0;
    std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    return text.data();
}

std::string Time(double nanoseconds) {
    if (std::abs(nanoseconds) < 1e3) {
        return Rounded(nanoseconds) + " ns";
    }
    if (std::abs(nanoseconds) < 1e6) {
        return Rounded(nanoseconds / 1e3) + " µs";
    }
    return Rounded(nanoseconds / 1e6) + " ms";
}

std::string Grouped(const std::string& digits) {
    std::string grouped;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i != 0 && (digits.size() - i) % 3 == 0) {
            grouped += ",";
        }
        grouped += digits[i];
    }
    return grouped;
}

/// Shows each benchmark on standard error as it ends, and all of them as a table in Markdown on
/// standard output at the end.
class TableReporter : public benchmark::ConsoleReporter {
 public:
    TableReporter() : ConsoleReporter(OO_Tabular) {
        SetOutputStream(&std::cerr);
        SetErrorStream(&std::cerr);
    }

    bool ReportContext(const Context& context) override {
        PrintBasicContext(&GetErrorStream(), context);
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            const std::string row = Row(run);
            std::cerr << row;
            m_rows += row;
        }
    }

    void Finalize() override {
        std::cout << "SQLite " << sqlite3_libversion()
                  << ".\n\n| | Size | CqSurvey | Beside it | Speed against that | Goal |\n"
                  << "|---|--:|--:|---|--:|---|\n"
                  << m_rows << std::flush;
    }

 private:
    static std::string Row(const Run& run) {
        const std::string name = run.run_name.function_name;
        const std::string start = "| " + name + " | " + Grouped(run.run_name.args) + " | ";
        if (run.error_occurred) {
            return start + run.error_message + " | | | |\n";
        }
        const auto value = [&](const char* counter) {
            const auto found = run.counters.find(counter);
            return found == run.counters.end() ? std::nan("") : found->second.value;
        };
        if (run.counters.contains("bytes")) {
            return start + Rounded(value("bytes")) + " bytes | " + run.report_label +
                   " | | at most " + Rounded(value("goal_bytes")) + " bytes" +
                   Verdict(value("bytes") <= value("goal_bytes")) + " |\n";
        }
        if (!run.counters.contains("rival_ns")) {
            return start + Time(value("ours_ns")) + " | | | |\n";
        }
        return start + Time(value("ours_ns")) + " | " + run.report_label + ": " +
               Time(value("rival_ns")) + " | " + Rounded(value("speed")) + " | " + Goal(value) +
               " |\n";
    }

    template <class Value>
    static std::string Goal(Value&& value) {
        if (const double least = value("goal_speed"); !std::isnan(least)) {
            return "at least " + Rounded(least) + Verdict(value("speed") >= least);
        }
        if (const double most = value("goal_beyond"); !std::isnan(most)) {
            return Time(value("beyond_ns")) + " more, at most " + Time(most) +
                   Verdict(value("beyond_ns") <= most);
        }
        if (const double most = value("goal_time"); !std::isnan(most)) {
            return "at most " + Time(most) + Verdict(value("ours_ns") <= most);
        }
        return "";
    }

    static std::string Verdict(bool reached) { return reached ? ": reached" : ": **missed**"; }

    std::string m_rows;
};

void RegisterAll() {
    RegisterRecord();
    RegisterOpen();
    RegisterMemory();
    RegisterIterate();
    RegisterFindByName();
    RegisterEdit();
    RegisterDelete();
    RegisterView();
    RegisterDescriptions();
    RegisterInformation();
    RegisterPolylines();
    RegisterDrawing();
    RegisterPlot();
    RegisterFieldDrawing();
}

}  // namespace

}  // namespace cqsurvey::bench

int main(int argc, char** argv) {
    try {
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
            return 2;
        }
        cqsurvey::bench::RegisterAll();
        cqsurvey::bench::TableReporter reporter;
        benchmark::RunSpecifiedBenchmarks(&reporter);
        benchmark::Shutdown();
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "cqbench: " << failure.what() << "\n";
        return 1;
    }
}
