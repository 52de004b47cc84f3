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

TEST(VarRecTest, KindsOfNaturalValuesAndCheckedReads) {
  AnsiString Narrow = "ab";
  String Wide = u"cd";
  TVariant V(3);
  TObject Obj;
  TIntfPtr<IInterface> Intf(new TVarRecIntf);
  EXPECT_EQ(Kinds({1, std::int16_t{-2}, 4000000000u, std::int64_t{5}, true, 'x', u'y', 2.5, "pc", Narrow, Wide,
                   u"lit", nullptr, static_cast<Pointer>(&Obj), &Obj, &TObject::ClassInfo(), V, Intf,
                   TVarRec::Currency(1), TVarRec::ShortString("s"), TVarRec::WideString(u"w"),
                   TVarRec::PWideChar(nullptr)}),
            (std::vector<TValueType>{vtInteger, vtInteger, vtInt64, vtInt64, vtBoolean, vtChar, vtWideChar, vtFloat,
                                     vtPChar, vtAnsiString, vtUnicodeString, vtUnicodeString, vtPointer, vtPointer,
                                     vtObject, vtClass, vtVariant, vtInterface, vtCurrency, vtString,
                                     vtWideString, vtPWideChar}));
  EXPECT_EQ(static_cast<int>(vtUnicodeString), 17);

  const TVarRec Big(4000000000u), Text(Wide), NullText(static_cast<const char*>(nullptr));
  EXPECT_EQ(Big.VInt64(), 4000000000);
  EXPECT_EQ(Text.WideText().data(), Wide.data());  // borrowed, not copied
  EXPECT_TRUE(NullText.NarrowText().empty());
  EXPECT_EQ(TVarRec::PWideChar(u"pw").WideText(), u"pw");
  EXPECT_THROW((void)Big.VInteger(), EInvalidCast);
  EXPECT_THROW((void)Text.NarrowText(), EInvalidCast);
}
