// An order of files.
#include "velto/vast/VASTMediaChoice.h"

#include "velto/platform/foundation/Text.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace velto {
namespace {

// Of what the network carries, as much is planned with: it varies, and trackings and pages use it, too.
constexpr double usableShare = 0.8;

// Compared field by field; less is better.
struct MediaRank {
  bool isGuess = false;  // whether it plays
  bool comesLate = false;
  double lateBitrate = 0;  // of those that come late, the smallest first
  double misfit = 0;
  bool isInsecure = false;
  double spare = 0;  // less bitrate than there might be

  auto key() const { return std::tie(isGuess, comesLate, lateBitrate, misfit, isInsecure, spare); }
};

// Of a rate that varies, the lowest decides whether it can be had.
std::optional<double> neededBitrate(const VASTMediaFile& file) {
  return file.minBitrate ? file.minBitrate : file.bitrate;
}

// How far from the view's size, in doublings of the sides: what must be made larger looks worse than what is made smaller.
double misfitOf(const VASTMediaFile& file, const VASTSurroundings& around) {
  constexpr double unknownSize = 2, blurCounts = 2;
  if (around.width <= 0 || around.height <= 0) return 0;
  if (file.width <= 0 || file.height <= 0)
    return file.delivery == VASTMediaFile::Delivery::Streaming ? 0 : unknownSize;
  const double scale = std::min(around.width / file.width, around.height / file.height);
  const double doublings = std::log2(scale);
  return std::round((doublings > 0 ? blurCounts * doublings : -doublings) * 10) / 10;
}

MediaRank rankOf(const VASTMediaFile& file, const VASTSurroundings& around) {
  MediaRank rank;
  rank.isGuess = around.surelyPlays && !around.surelyPlays(file);
  const auto needed = neededBitrate(file);
  rank.comesLate = around.bandwidth && needed && *needed > *around.bandwidth * usableShare;
  if (rank.comesLate) rank.lateBitrate = *needed;
  rank.misfit = misfitOf(file, around);
  rank.isInsecure = !lowercased(file.url.substr(0, 6)).starts_with("https:");
  rank.spare = -file.maxBitrate.value_or(file.bitrate.value_or(0));
  return rank;
}

}  // namespace

std::vector<VASTMediaFile> chooseVASTMedia(const std::vector<VASTMediaFile>& files,
                                           const VASTSurroundings& surroundings) {
  std::vector<std::pair<MediaRank, const VASTMediaFile*>> ranked;
  for (const auto& file : files) {
    if (!file.apiFramework.empty() || (surroundings.canPlay && !surroundings.canPlay(file))) continue;
    const auto rank = rankOf(file, surroundings);
    if (!rank.isInsecure || !surroundings.onlySecure) ranked.emplace_back(rank, &file);
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& a, const auto& b) { return a.first.key() < b.first.key(); });
  std::vector<VASTMediaFile> chosen;
  chosen.reserve(ranked.size());
  for (const auto& one : ranked) chosen.push_back(*one.second);
  return chosen;
}

}  // namespace velto
