#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "Runtime/Runtime.h"

using namespace kz;

namespace {

class TVarRecIntf : public TInterfacedObject {
  KZ_CLASS(TVarRecIntf, TInterfacedObject)
};

std::vector<TValueType> Kinds(std::initializer_list<TVarRec> Args) {
  std::vector<TValueType> R;
  for (const TVarRec& A : Args) R.push_back(A.VType());
  return R;
}

}  // namespace

TEST(VarRecTest, NaturalValuesPickTheirKind) {
  EXPECT_EQ(vtUnicodeString, 17);
  AnsiString Narrow = "ab";
  String Wide = u"cd";
  TVariant V(3);
  TObject Obj;
  TIntfPtr<IInterface> Intf(new TVarRecIntf);
  std::int16_t Small = -2;
  std::uint32_t Big = 4000000000u;
  EXPECT_EQ(Kinds({1, Small, Big, std::int64_t{5}, true, 'x', u'y', 2.5, 1.5f, "pc", Narrow, Wide, u"lit",
                   nullptr, static_cast<Pointer>(&Obj), &Obj, &TObject::ClassInfo(), V, Intf, Intf.get()}),
            (std::vector<TValueType>{vtInteger, vtInteger, vtInt64, vtInt64, vtBoolean, vtChar, vtWideChar,
                                     vtFloat, vtFloat, vtPChar, vtAnsiString, vtUnicodeString, vtUnicodeString,
                                     vtPointer, vtPointer, vtObject, vtClass, vtVariant, vtInterface,
                                     vtInterface}));
  EXPECT_EQ(Kinds({TVarRec::Currency(15000), TVarRec::ShortString("s"), TVarRec::WideString(u"w"),
                   TVarRec::PWideChar(nullptr)}),
            (std::vector<TValueType>{vtCurrency, vtString, vtWideString, vtPWideChar}));
}

TEST(VarRecTest, ReadsTheDatumOfItsOwnKindOnly) {
  String Wide = u"wide";
  TVarRec A[] = {TVarRec(std::uint32_t{4000000000u}), TVarRec("narrow"), TVarRec(Wide),
                 TVarRec(static_cast<const char*>(nullptr)), TVarRec::PWideChar(u"pw"),
                 TVarRec::ShortString("short")};
  EXPECT_EQ(A[0].VInt64(), 4000000000);
  EXPECT_EQ(A[1].NarrowText(), "narrow");
  EXPECT_EQ(A[2].WideText(), u"wide");
  EXPECT_EQ(A[2].WideText().data(), Wide.data());  // borrowed, not copied
  EXPECT_TRUE(A[3].NarrowText().empty());
  EXPECT_EQ(A[4].WideText(), u"pw");
  EXPECT_EQ(A[5].NarrowText(), "short");
  EXPECT_THROW((void)A[0].VInteger(), EInvalidCast);
  EXPECT_THROW((void)A[1].WideText(), EInvalidCast);
  EXPECT_THROW((void)A[2].NarrowText(), EInvalidCast);
  EXPECT_THROW((void)TVarRec(1.0).VCurrency(), EInvalidCast);
}
