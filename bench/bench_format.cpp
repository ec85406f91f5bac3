// The property-text formatter against snprintf, for the conversions the comparers use per entity.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "platform/text.h"

namespace {

std::vector<double> sampleCoordinates() {
  std::mt19937_64 rng(42);
  std::uniform_real_distribution<double> d(-100000.0, 100000.0);
  std::vector<double> v(4096);
  for (double& x : v) x = d(rng);
  return v;
}

void BM_Fixed2_Formatter(benchmark::State& state) {
  const auto values = sampleCoordinates();
  std::size_t i = 0;
  std::string out;
  for (auto _ : state) {
    out.clear();
    platform::appendFixed(out, values[i++ & 4095], 2);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_Fixed2_Formatter);

void BM_Fixed2_Snprintf(benchmark::State& state) {
  const auto values = sampleCoordinates();
  std::size_t i = 0;
  char buf[64];
  for (auto _ : state) {
    std::snprintf(buf, sizeof buf, "%.2f", values[i++ & 4095]);
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_Fixed2_Snprintf);

void BM_LineKey_Formatter(benchmark::State& state) {
  const auto values = sampleCoordinates();
  std::size_t i = 0;
  for (auto _ : state) {
    const std::size_t k = i++ & 4091;
    std::string key = platform::fmt("%s,%.2f,%.2f,%.2f,%.2f", "LINE", values[k], values[k + 1], values[k + 2], values[k + 3]);
    benchmark::DoNotOptimize(key.data());
  }
}
BENCHMARK(BM_LineKey_Formatter);

void BM_LineKey_Snprintf(benchmark::State& state) {
  const auto values = sampleCoordinates();
  std::size_t i = 0;
  char buf[256];
  for (auto _ : state) {
    const std::size_t k = i++ & 4091;
    std::snprintf(buf, sizeof buf, "%s,%.2f,%.2f,%.2f,%.2f", "LINE", values[k], values[k + 1], values[k + 2], values[k + 3]);
    std::string key(buf);
    benchmark::DoNotOptimize(key.data());
  }
}
BENCHMARK(BM_LineKey_Snprintf);

void BM_Fixed6_Formatter(benchmark::State& state) {
  const auto values = sampleCoordinates();
  std::size_t i = 0;
  std::string out;
  for (auto _ : state) {
    out.clear();
    platform::appendFixed(out, values[i++ & 4095], 6);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_Fixed6_Formatter);

void BM_Fixed6_Snprintf(benchmark::State& state) {
  const auto values = sampleCoordinates();
  std::size_t i = 0;
  char buf[64];
  for (auto _ : state) {
    std::snprintf(buf, sizeof buf, "%f", values[i++ & 4095]);
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_Fixed6_Snprintf);

void BM_Int_Formatter(benchmark::State& state) {
  int i = 0;
  std::string out;
  for (auto _ : state) {
    out.clear();
    platform::appendInt(out, i++ * 7919);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_Int_Formatter);

void BM_Int_Snprintf(benchmark::State& state) {
  int i = 0;
  char buf[32];
  for (auto _ : state) {
    std::snprintf(buf, sizeof buf, "%d", i++ * 7919);
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_Int_Snprintf);

}  // namespace
