// The bucket functions against straightforward versions written on decimal text.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "GHashTable/GHashTable.h"

using namespace kz;

namespace {

std::int64_t Mod(std::int64_t V, std::int32_t Size) { return V % Size; }
std::uint32_t Low31(std::int32_t Key) { return static_cast<std::uint32_t>(Key) & 0x7FFFFFFFu; }
// The digits of Size's decimal text, its minus sign not counted.
std::size_t Digits(std::int32_t Size) { return std::to_string(Size).size() - (Size < 0 ? 1 : 0); }

std::int64_t TextTruncation(std::int32_t Key, std::int32_t Size) {
  const std::size_t D = Digits(Size);
  std::string T = std::to_string(Low31(Key));
  if (T.size() > D) T = T.substr(T.size() - D);
  return Mod(std::stoll(T), Size);
}

std::int64_t TextMidSquare(std::int32_t Key, std::int32_t Size) {
  const std::uint32_t S = (static_cast<std::uint32_t>(Key) * static_cast<std::uint32_t>(Key)) & 0x7FFFFFFFu;
  const std::size_t D = Digits(Size);
  std::string T = std::to_string(S);
  const std::size_t L = T.size(), M = L / 2;
  if (M > D) T = T.substr(L - M, D);
  return Mod(std::stoll(T), Size);
}

std::int64_t TextFolding(std::int32_t Key, std::int32_t Size) {
  const std::string T = std::to_string(Low31(Key));
  std::string R(1, T[0]);
  for (std::size_t I = 1; I <= T.size(); ++I)
    if (I % 2 == 0 || I % 3 == 0) R += T[I - 1];
  return Mod(std::stoll(R), Size);
}

}  // namespace

TEST(HashFunctions, MatchTheTextDefinitionsOverManyKeysAndSizes) {
  TGHashtable T(11, 0.75f);
  std::mt19937 Rng(20240521);
  const std::int32_t Sizes[] = {1, 2, 7, 10, 11, 23, 99, 100, 101, 997, 1000, 4093, 10007, 65535, 99991, 100003,
                                999983, 1000003, 9999991, 16777213, 99999989, 123456789, 999999937, 1000000007,
                                2147483647, -7, -1000, -2147483647 - 1};
  std::vector<std::int32_t> Keys = {0, 1, -1, 9, 10, 99, 100, 12345, 123456789, 999999999, 1000000000,
                                    2147483647, -2147483647 - 1, 46340, 46341, 65535, 65536, -123456789};
  for (int I = 0; I < 3000; ++I) Keys.push_back(static_cast<std::int32_t>(Rng()));
  // Keys of every digit count, so each text length is met.
  for (std::int64_t P = 1; P <= 1000000000; P *= 10)
    for (int I = 0; I < 50; ++I) Keys.push_back(static_cast<std::int32_t>(P + Rng() % (P * 9)));
  for (std::int32_t Size : Sizes)
    for (std::int32_t K : Keys) {
      SCOPED_TRACE(testing::Message() << "key " << K << " size " << Size);
      ASSERT_EQ(T.DivisionHash(K, Size), Mod(Low31(K), Size));
      ASSERT_EQ(T.TruncationHash(K, Size), TextTruncation(K, Size));
      ASSERT_EQ(T.MidSquareHash(K, Size), TextMidSquare(K, Size));
      ASSERT_EQ(T.FoldingHash(K, Size), TextFolding(K, Size));
    }
  // A known value keeps the text versions themselves honest: "902" from the middle of 152399025.
  EXPECT_EQ(T.MidSquareHash(12345, 100), 2);
  for (auto F : {&TGCustomHashtable::DivisionHash, &TGCustomHashtable::TruncationHash,
                 &TGCustomHashtable::MidSquareHash, &TGCustomHashtable::FoldingHash})
    EXPECT_THROW((T.*F)(42, 0), EDivByZero);
  EXPECT_THROW(T.HashCode(nullptr, 11), EGHashtableError);
}
