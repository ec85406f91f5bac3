// vk_gen_drawing: writes a large synthetic DXF drawing, or an edited revision of one, for benchmarks.
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "drawing_generator.h"

namespace {

constexpr const char* kUsage =
    "Usage: vk_gen_drawing --entities N [--seed S] [--version AC1015|AC1009|AC1032]\n"
    "                      [--mix full|simple] [--edit-fraction F --base-seed S0] [--crlf] OUT.dxf\n"
    "\n"
    "Writes an ASCII DXF drawing of N top-level entities of mixed types on a grid.\n"
    "\n"
    "  --entities N       top-level entities in model space (1e6 and 1000000 both work)\n"
    "  --seed S           random seed (default 1); the same seed gives the same file\n"
    "  --version V        AC1015 (R2000, default), AC1009 (R12) or AC1032 (R2018)\n"
    "  --mix M            full (default): every kind; simple: LINE, CIRCLE, ARC, LWPOLYLINE and TEXT\n"
    "  --edit-fraction F  write revision B of the drawing of --base-seed S0: a fraction F of its\n"
    "                     entities moved, recoloured, retexted, resized or deleted, and some added;\n"
    "                     --seed chooses the edits\n"
    "  --crlf             end lines with CR LF\n";

// A count or seed: digits, or a number in exponent form such as 1e6.
bool parseCount(std::string_view text, std::uint64_t& value) {
  if (text.empty()) return false;
  char* end = nullptr;
  const std::string s(text);
  if (s.find_first_of("eE.") == std::string::npos) {
    errno = 0;
    const unsigned long long v = std::strtoull(s.c_str(), &end, 10);
    if (errno || *end || s.front() == '-') return false;
    value = v;
    return true;
  }
  const double d = std::strtod(s.c_str(), &end);
  if (*end || !(d >= 0.0) || d > 1e15 || d != std::floor(d)) return false;
  value = static_cast<std::uint64_t>(d);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  vkbench::GeneratorOptions opt;
  std::string out;
  bool haveEntities = false, haveBase = false;
  for (int i = 1; i < argc; ++i) {
    const std::string_view arg = argv[i];
    const auto value = [&](std::string_view& v) {
      if (i + 1 >= argc) {
        std::fprintf(stderr, "vk_gen_drawing: %s needs a value\n", argv[i]);
        return false;
      }
      v = argv[++i];
      return true;
    };
    std::string_view v;
    if (arg == "--help" || arg == "-h") {
      std::fputs(kUsage, stdout);
      return 0;
    } else if (arg == "--entities") {
      if (!value(v)) return 2;
      if (!parseCount(v, opt.entities)) {
        std::fprintf(stderr, "vk_gen_drawing: --entities wants a whole number, not '%.*s'\n", static_cast<int>(v.size()), v.data());
        return 2;
      }
      haveEntities = true;
    } else if (arg == "--seed" || arg == "--base-seed") {
      if (!value(v)) return 2;
      std::uint64_t s = 0;
      if (!parseCount(v, s)) {
        std::fprintf(stderr, "vk_gen_drawing: %s wants a whole number, not '%.*s'\n", argv[i - 1], static_cast<int>(v.size()), v.data());
        return 2;
      }
      if (arg == "--seed") opt.seed = s;
      else {
        opt.baseSeed = s;
        haveBase = true;
      }
    } else if (arg == "--version") {
      if (!value(v)) return 2;
      opt.version = std::string(v);
      if (!vkbench::isSupportedVersion(opt.version)) {
        std::fprintf(stderr, "vk_gen_drawing: --version must be AC1015, AC1009 or AC1032, not '%s'\n", opt.version.c_str());
        return 2;
      }
    } else if (arg == "--mix") {
      if (!value(v)) return 2;
      opt.mix = std::string(v);
      if (!vkbench::isSupportedMix(opt.mix)) {
        std::fprintf(stderr, "vk_gen_drawing: --mix must be full or simple, not '%s'\n", opt.mix.c_str());
        return 2;
      }
    } else if (arg == "--edit-fraction") {
      if (!value(v)) return 2;
      char* end = nullptr;
      const std::string s(v);
      opt.editFraction = std::strtod(s.c_str(), &end);
      if (s.empty() || *end || !(opt.editFraction >= 0.0 && opt.editFraction <= 1.0)) {
        std::fprintf(stderr, "vk_gen_drawing: --edit-fraction wants a number from 0 to 1, not '%s'\n", s.c_str());
        return 2;
      }
      opt.revision = true;
    } else if (arg == "--crlf") {
      opt.crlf = true;
    } else if (!arg.empty() && arg.front() == '-') {
      std::fprintf(stderr, "vk_gen_drawing: unknown option '%s'\n\n%s", argv[i], kUsage);
      return 2;
    } else if (out.empty()) {
      out = std::string(arg);
    } else {
      std::fprintf(stderr, "vk_gen_drawing: one output file ('%s' is one too many)\n", argv[i]);
      return 2;
    }
  }
  if (!haveEntities || out.empty()) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  if (opt.revision != haveBase) {
    std::fprintf(stderr, "vk_gen_drawing: --edit-fraction and --base-seed go together\n");
    return 2;
  }

  const auto t0 = std::chrono::steady_clock::now();
  vkbench::GeneratorStats stats;
  std::string error;
  if (!vkbench::generateDrawing(opt, out, stats, error)) {
    std::fprintf(stderr, "vk_gen_drawing: %s\n", error.c_str());
    return 1;
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  std::printf("%s: %s, %s mix, %llu entities (%llu attributes and vertices), %.1f MB in %.2f s\n", out.c_str(), opt.version.c_str(), opt.mix.c_str(),
              static_cast<unsigned long long>(stats.entities), static_cast<unsigned long long>(stats.subEntities),
              static_cast<double>(stats.bytes) / 1e6, seconds);
  for (const auto& [name, count] : stats.byType) std::printf("  %-12s %llu\n", name.c_str(), static_cast<unsigned long long>(count));
  if (opt.revision)
    std::printf("revision of seed %llu: %llu moved, %llu recoloured, %llu retexted, %llu reshaped, %llu deleted, %llu added\n",
                static_cast<unsigned long long>(opt.baseSeed), static_cast<unsigned long long>(stats.moved),
                static_cast<unsigned long long>(stats.recoloured), static_cast<unsigned long long>(stats.retexted),
                static_cast<unsigned long long>(stats.reshaped), static_cast<unsigned long long>(stats.deleted),
                static_cast<unsigned long long>(stats.added));
  return 0;
}
