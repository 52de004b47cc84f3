#include <gtest/gtest.h>

#include "KZCommon/KZCommon.h"

using namespace kz;

TEST(KZStringStream, StartsAtTheBeginningInItsEncoding) {
  TKZStringStream S(u"h\u00e9llo");
  EXPECT_EQ(S.GetPosition(), 0);
  EXPECT_EQ(S.GetEncoding(), TEncoding::UTF8());
  EXPECT_EQ(S.ReadString(3), u"h\u00e9");  // UTF-8: the accent takes two bytes

  TKZStringStream N(u"\u00e9", nullptr, true);  // null: UTF-8, the shared one is not freed
  Byte B[2];
  N.ReadBuffer(B, 2);
  EXPECT_EQ(B[0], 0xC3);
  EXPECT_EQ(B[1], 0xA9);

  TKZStringStream W(u"ab", TEncoding::Unicode(), false);
  EXPECT_EQ(W.GetPosition(), 0);
  EXPECT_EQ(W.GetSize(), 4);
  EXPECT_EQ(W.ReadString(4), u"ab");
  TKZStringStream O(u"x", new TBigEndianUnicodeEncoding, true);  // freed with the stream
  EXPECT_EQ(O.GetDataString(), u"x");

  // A text stream over it reads the text with the stream's own encoding.
  TKZStringStream T(u"\u00e9!", TEncoding::BigEndianUnicode(), false);
  TGTextStream G(&T);
  G.Read(B, 2);
  EXPECT_EQ(G.GetEncoding(), TEncoding::BigEndianUnicode());
  EXPECT_EQ(B[1], 0xE9);
}
