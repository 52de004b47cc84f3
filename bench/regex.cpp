// Finding the first match of a pattern in a text: TGRegularExpression::Match against
// std::regex_search and RE2::PartialMatch, for patterns all three read alike, over random
// lower-case texts of 1 KiB to 1 MiB whose only match stands at the end.
#include <benchmark/benchmark.h>
#include <re2/re2.h>

#include <random>
#include <regex>
#include <string>

#include "GRegularExpression/GRegularExpression.h"

namespace {

const char* const Patterns[] = {"needle", "[0-9]+x", "foo|bar|qux", "ab*c[de]"};
const char* const Endings[] = {"needle", "42x", "qux", "abbbce"};

std::string MakeText(std::int64_t Size, int Pattern) {
  std::mt19937 Random(12345);
  std::string Text(static_cast<std::size_t>(Size), 'a');
  // Any lower-case letter: the patterns' first letters occur often, but a match needs a
  // run of them that random letters almost never make.
  for (char& Ch : Text) Ch = static_cast<char>('a' + Random() % 26);
  const std::string End = Endings[Pattern];
  Text.replace(Text.size() - End.size(), End.size(), End);
  return Text;
}

void Library(benchmark::State& State) {
  const int P = static_cast<int>(State.range(1));
  const std::string Text = MakeText(State.range(0), P);
  kz::TGRegularExpression R(Patterns[P]);
  for (auto _ : State) benchmark::DoNotOptimize(R.Match(Text, false));
  State.SetBytesProcessed(State.iterations() * State.range(0));
}

void StdRegex(benchmark::State& State) {
  const int P = static_cast<int>(State.range(1));
  const std::string Text = MakeText(State.range(0), P);
  const std::regex R(Patterns[P]);
  for (auto _ : State) benchmark::DoNotOptimize(std::regex_search(Text, R));
  State.SetBytesProcessed(State.iterations() * State.range(0));
}

void Re2(benchmark::State& State) {
  const int P = static_cast<int>(State.range(1));
  const std::string Text = MakeText(State.range(0), P);
  const re2::RE2 R(Patterns[P]);
  for (auto _ : State) benchmark::DoNotOptimize(re2::RE2::PartialMatch(Text, R));
  State.SetBytesProcessed(State.iterations() * State.range(0));
}

void Sizes(benchmark::internal::Benchmark* B) {
  for (int P = 0; P < 4; ++P)
    for (std::int64_t Size : {1 << 10, 1 << 16, 1 << 20}) B->Args({Size, P});
}

}  // namespace

BENCHMARK(Library)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(StdRegex)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(Re2)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
