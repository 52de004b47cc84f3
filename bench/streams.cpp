// Reading and writing a 64 MiB file in pieces through the buffered stream, through the
// standard file streams, and with raw system calls, all in one run.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

#include "GStreams/GStreams.h"

namespace {

constexpr std::size_t GFileSize = 64u << 20;

const std::string& ReadPath() {
  static const std::string P = (std::filesystem::temp_directory_path() / "kz_bench_streams_in.bin").string();
  return P;
}
const std::string& WritePath() {
  static const std::string P = (std::filesystem::temp_directory_path() / "kz_bench_streams_out.bin").string();
  return P;
}

void PrepareReadFile() {
  static bool Done = false;
  if (Done) return;
  std::vector<char> Block(1 << 20);
  for (std::size_t i = 0; i < Block.size(); ++i) Block[i] = static_cast<char>(i * 31);
  std::ofstream O(ReadPath(), std::ios::binary | std::ios::trunc);
  for (std::size_t i = 0; i < GFileSize / Block.size(); ++i) O.write(Block.data(), static_cast<std::streamsize>(Block.size()));
  Done = true;
}

std::vector<char> Piece(std::size_t N) { return std::vector<char>(N, 'x'); }

void Finish(benchmark::State& State) {
  State.SetBytesProcessed(static_cast<std::int64_t>(State.iterations()) * static_cast<std::int64_t>(GFileSize));
}

// --- write ---

// Block is the buffered stream's block size: the default 8 KiB, or raised to the piece size.
template <std::uint32_t Block>
void BM_Write_GBufferStream(benchmark::State& State) {
  const auto N = static_cast<std::size_t>(State.range(0));
  std::vector<char> P = Piece(N);
  for (auto _ : State) {
    kz::TFileStream F(kz::AsciiToString(WritePath()), kz::fmCreate);
    kz::TGBufferStream B(&F);
    B.SetBufferSize(Block);
    for (std::size_t Done = 0; Done < GFileSize; Done += N) B.Write(P.data(), static_cast<std::int32_t>(N));
    B.Close();
  }
  Finish(State);
}

void BM_Write_ofstream(benchmark::State& State) {
  const auto N = static_cast<std::size_t>(State.range(0));
  std::vector<char> P = Piece(N);
  for (auto _ : State) {
    std::ofstream O(WritePath(), std::ios::binary | std::ios::trunc);
    for (std::size_t Done = 0; Done < GFileSize; Done += N) O.write(P.data(), static_cast<std::streamsize>(N));
    O.close();
  }
  Finish(State);
}

void BM_Write_raw(benchmark::State& State) {
  const auto N = static_cast<std::size_t>(State.range(0));
  std::vector<char> P = Piece(N);
  for (auto _ : State) {
    const int Fd = ::open(WritePath().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    for (std::size_t Done = 0; Done < GFileSize; Done += N)
      if (::write(Fd, P.data(), N) != static_cast<ssize_t>(N)) State.SkipWithError("short write");
    ::close(Fd);
  }
  Finish(State);
}

// --- read ---

template <std::uint32_t Block>
void BM_Read_GBufferStream(benchmark::State& State) {
  PrepareReadFile();
  const auto N = static_cast<std::size_t>(State.range(0));
  std::vector<char> P = Piece(N);
  for (auto _ : State) {
    kz::TFileStream F(kz::AsciiToString(ReadPath()), kz::fmOpenRead);
    kz::TGBufferStream B(&F);
    B.SetBufferSize(Block);
    std::size_t Total = 0;
    while (const std::int32_t Got = B.Read(P.data(), static_cast<std::int32_t>(N))) Total += static_cast<std::size_t>(Got);
    if (Total != GFileSize) State.SkipWithError("short read");
    benchmark::DoNotOptimize(P.data());
  }
  Finish(State);
}

void BM_Read_ifstream(benchmark::State& State) {
  PrepareReadFile();
  const auto N = static_cast<std::size_t>(State.range(0));
  std::vector<char> P = Piece(N);
  for (auto _ : State) {
    std::ifstream I(ReadPath(), std::ios::binary);
    std::size_t Total = 0;
    while (I.read(P.data(), static_cast<std::streamsize>(N)) || I.gcount() > 0) Total += static_cast<std::size_t>(I.gcount());
    if (Total != GFileSize) State.SkipWithError("short read");
    benchmark::DoNotOptimize(P.data());
  }
  Finish(State);
}

void BM_Read_raw(benchmark::State& State) {
  PrepareReadFile();
  const auto N = static_cast<std::size_t>(State.range(0));
  std::vector<char> P = Piece(N);
  for (auto _ : State) {
    const int Fd = ::open(ReadPath().c_str(), O_RDONLY);
    std::size_t Total = 0;
    while (true) {
      const ssize_t Got = ::read(Fd, P.data(), N);
      if (Got <= 0) break;
      Total += static_cast<std::size_t>(Got);
    }
    ::close(Fd);
    if (Total != GFileSize) State.SkipWithError("short read");
    benchmark::DoNotOptimize(P.data());
  }
  Finish(State);
}

// Pieces of 64 bytes (where buffering matters) and of 64 KiB (where it should cost nothing).
#define KZ_PIECES ->Arg(64)->Arg(65536)->Unit(benchmark::kMillisecond)
BENCHMARK(BM_Write_GBufferStream<8192>)->Name("BM_Write_GBufferStream") KZ_PIECES;
BENCHMARK(BM_Write_GBufferStream<65536>)->Name("BM_Write_GBufferStream64K") KZ_PIECES;
BENCHMARK(BM_Write_ofstream) KZ_PIECES;
BENCHMARK(BM_Write_raw) KZ_PIECES;
BENCHMARK(BM_Read_GBufferStream<8192>)->Name("BM_Read_GBufferStream") KZ_PIECES;
BENCHMARK(BM_Read_GBufferStream<65536>)->Name("BM_Read_GBufferStream64K") KZ_PIECES;
BENCHMARK(BM_Read_ifstream) KZ_PIECES;
BENCHMARK(BM_Read_raw) KZ_PIECES;

struct TCleanup {
  ~TCleanup() {
    std::remove(ReadPath().c_str());
    std::remove(WritePath().c_str());
  }
} GCleanup;

}  // namespace

BENCHMARK_MAIN();
