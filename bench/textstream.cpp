// Reading a 64 MiB UTF-8 text file line by line and character by character through the text
// stream, beside std::getline on std::ifstream, in one run.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "GStreams/GStreams.h"
#include "Runtime/Text.h"

namespace {

constexpr std::size_t GFileSize = 64u << 20;

const std::string& TextPath() {
  static const std::string P = (std::filesystem::temp_directory_path() / "kz_bench_textstream.txt").string();
  return P;
}

// Lines of 20 to 100 characters, about one in ten lines with two- and three-byte characters.
void PrepareTextFile() {
  static bool Done = false;
  if (Done) return;
  std::ofstream Out(TextPath(), std::ios::binary | std::ios::trunc);
  std::size_t Written = 0;
  std::uint32_t R = 12345;
  while (Written < GFileSize) {
    R = R * 1103515245u + 12345u;
    std::string Line(20 + (R >> 16) % 80, 'a');
    for (std::size_t i = 0; i < Line.size(); ++i) Line[i] = static_cast<char>('a' + (R >> (i % 16)) % 26);
    if ((R >> 8) % 10 == 0) Line += "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC";
    Line += '\n';
    Out << Line;
    Written += Line.size();
  }
  Done = true;
}

void BM_TextStreamGetLine(benchmark::State& State) {
  PrepareTextFile();
  for (auto _ : State) {
    kz::TGTextStream S(kz::Utf8ToString(TextPath()), kz::fmOpenRead, kz::TEncoding::UTF8());
    std::size_t Chars = 0;
    while (!S.IsEof()) Chars += S.GetLine().size();
    benchmark::DoNotOptimize(Chars);
  }
  State.SetBytesProcessed(static_cast<std::int64_t>(State.iterations() * GFileSize));
}

void BM_StdGetline(benchmark::State& State) {
  PrepareTextFile();
  for (auto _ : State) {
    std::ifstream In(TextPath(), std::ios::binary);
    std::string Line;
    std::size_t Chars = 0;
    while (std::getline(In, Line)) Chars += Line.size();
    benchmark::DoNotOptimize(Chars);
  }
  State.SetBytesProcessed(static_cast<std::int64_t>(State.iterations() * GFileSize));
}

void BM_TextStreamGetCharLoop(benchmark::State& State) {
  PrepareTextFile();
  for (auto _ : State) {
    kz::TGTextStream S(kz::Utf8ToString(TextPath()), kz::fmOpenRead, kz::TEncoding::UTF8());
    std::uint32_t Sum = 0;
    for (kz::Char C; S.GetChar(C);) Sum += C;
    benchmark::DoNotOptimize(Sum);
  }
  State.SetBytesProcessed(static_cast<std::int64_t>(State.iterations() * GFileSize));
}

}  // namespace

BENCHMARK(BM_StdGetline)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_TextStreamGetLine)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_TextStreamGetCharLoop)->Unit(benchmark::kMillisecond)->Iterations(3);

BENCHMARK_MAIN();
