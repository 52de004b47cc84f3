#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "GValue/GValue.h"
#include "Runtime/Runtime.h"

using namespace kz;

namespace {

class TValueIntf : public TInterfacedObject {
  KZ_CLASS(TValueIntf, TInterfacedObject)
};

class TSubValue : public TGValue {
  KZ_CLASS(TSubValue, TGValue)
};

template <class F>
String MessageOf(F&& Call) {
  try {
    Call();
  } catch (const Exception& E) {
    return E.Message();
  }
  return u"<no exception>";
}

}  // namespace

TEST(GValueTest, UnassignedValuesRaiseOnEveryRead) {
  TGValue V;
  EXPECT_TRUE(V.GetUnassigned());
  const std::vector<std::function<void()>> Reads = {
      [&] { (void)V.GetAsInteger(); },  [&] { (void)V.GetAsBoolean(); },  [&] { (void)V.GetAsChar(); },
      [&] { (void)V.GetAsFloat(); },    [&] { (void)V.GetAsString(); },   [&] { (void)V.GetAsPointer(); },
      [&] { (void)V.GetAsObject(); },   [&] { (void)V.GetAsClass(); },    [&] { (void)V.GetAsCurrency(); },
      [&] { (void)V.GetAsVariant(); },  [&] { (void)V.GetAsInterface(); }, [&] { (void)V.GetAsWideString(); },
      [&] { (void)V.GetAsPChar(); }};
  for (const auto& Read : Reads) EXPECT_EQ(MessageOf(Read), u"Value is unassigned");
  // A value made from a tagged argument keeps it but still reads as unassigned.
  TGValue FromArg(TVarRec(7));
  EXPECT_EQ(FromArg.GetValueType(), vtInteger);
  EXPECT_EQ(MessageOf([&] { (void)FromArg.GetAsInteger(); }), u"Value is unassigned");
  FromArg.AssignVarRec(TVarRec(8));
  EXPECT_EQ(FromArg.GetAsInteger(), 8);
  TGValue Other;
  EXPECT_EQ(MessageOf([&] { (void)V.Equals(Other); }), u"Value is unassigned");
}

TEST(GValueTest, ScalarConversions) {
  TGValue V;
  V.SetAsInteger(5);
  EXPECT_EQ(V.GetAsString(), u"5");
  EXPECT_TRUE(V.GetAsBoolean());
  EXPECT_EQ(V.GetAsFloat(), 5.0f);
  EXPECT_EQ(V.GetAsCurrency(), 50000);
  EXPECT_EQ(V.GetAsVariant().AsInteger(), 5);
  V.SetAsInteger(0x141);
  EXPECT_EQ(V.GetAsChar(), 'A');  // the low byte of the code

  struct {
    float In;
    std::int32_t Int;
    const char16_t* Text;
  } const Floats[] = {{2.5f, 2, u"2.5"}, {3.5f, 4, u"3.5"}, {-2.5f, -2, u"-2.5"}, {1.25f, 1, u"1.25"}};
  for (const auto& C : Floats) {
    V.SetAsFloat(C.In);
    EXPECT_EQ(V.GetValueType(), vtFloat);
    EXPECT_EQ(V.GetAsInteger(), C.Int) << C.In;
    EXPECT_EQ(V.GetAsString(), C.Text);
  }
  V.SetAsFloat(3e9f);
  EXPECT_THROW((void)V.GetAsInteger(), EConvertError);
  V.SetAsFloat(std::numeric_limits<float>::quiet_NaN());
  EXPECT_THROW((void)V.GetAsInteger(), EConvertError);
  EXPECT_THROW((void)V.GetAsCurrency(), EConvertError);
  V.SetAsFloat(std::numeric_limits<float>::max());
  EXPECT_THROW((void)V.GetAsCurrency(), EConvertError);

  // Currency is kept as a single: about seven digits survive.
  V.SetAsCurrency(12345);  // 1.2345
  EXPECT_EQ(V.GetValueType(), vtCurrency);
  EXPECT_EQ(V.GetAsCurrency(), 12345);
  V.SetAsCurrency(123456789012345);
  EXPECT_NE(V.GetAsCurrency(), 123456789012345);
  EXPECT_NEAR(static_cast<double>(V.GetAsCurrency()), 123456789012345.0, 1e9);
  V.SetAsCurrency(INT64_MIN);
  EXPECT_FLOAT_EQ(V.GetAsFloat(), -922337203685477.5808f);

  V.SetAsBoolean(true);
  EXPECT_EQ(V.GetAsChar(), 'T');
  EXPECT_EQ(V.GetAsString(), u"True");
  EXPECT_EQ(V.GetAsInteger(), 1);
  V.SetAsBoolean(false);
  EXPECT_EQ(V.GetAsChar(), 'F');
  EXPECT_EQ(V.GetAsString(), u"False");

  V.SetAsChar('\xE9');
  EXPECT_EQ(V.GetAsInteger(), 0xE9);
  EXPECT_EQ(V.GetAsString(), u"\u00E9");
  EXPECT_EQ(V.GetAsVariant().AsString(), u"\u00E9");
}

TEST(GValueTest, TextConversions) {
  TGValue V;
  V.SetAsString(u"42");
  EXPECT_EQ(V.GetValueType(), vtAnsiString);
  EXPECT_EQ(V.GetAsInteger(), 42);
  EXPECT_EQ(V.GetAsFloat(), 42.0f);
  EXPECT_EQ(V.GetAsChar(), '4');
  V.SetAsString(u"4 2");
  EXPECT_EQ(MessageOf([&] { (void)V.GetAsInteger(); }), u"'4 2' is not a valid integer value");
  V.SetAsString(u"1e300");
  EXPECT_EQ(V.GetAsFloat(), std::numeric_limits<float>::infinity());

  struct {
    const char16_t* Text;
    int Expected;  // 1 true, 0 false, -1 raises
  } const Words[] = {{u"t", 1}, {u"True", 1}, {u"TRUE", 1}, {u"f", 0}, {u"faLSE", 0},
                     {u"yes", -1}, {u"", -1}, {u"1", -1}};
  for (const auto& W : Words) {
    V.SetAsString(W.Text);
    if (W.Expected < 0)
      EXPECT_EQ(MessageOf([&] { (void)V.GetAsBoolean(); }), u"Error converting value") << "text";
    else
      EXPECT_EQ(V.GetAsBoolean(), W.Expected == 1);
  }
  V.SetAsChar('t');
  EXPECT_TRUE(V.GetAsBoolean());
  V.SetAsString(u"");
  EXPECT_EQ(MessageOf([&] { (void)V.GetAsChar(); }), u"Error converting value");

  V.SetAsPChar(u"abc");
  EXPECT_EQ(V.GetValueType(), vtAnsiString);
  const Char* P = V.GetAsPChar();
  EXPECT_EQ(String(P), u"abc");
  V.SetAsPChar(nullptr);
  EXPECT_EQ(V.GetAsString(), u"");

  V.SetAsWideString(u"wide");
  EXPECT_EQ(V.GetValueType(), vtWideString);
  EXPECT_EQ(V.GetAsWideString(), u"wide");
  EXPECT_EQ(V.GetAsVariant().AsString(), u"wide");
  EXPECT_THROW((void)V.GetAsPointer(), EConvertError);
  V.AssignVarRec(TVarRec::ShortString("sh\xF6rt"));
  EXPECT_EQ(V.GetValueType(), vtString);
  EXPECT_EQ(V.GetAsString(), u"sh\u00F6rt");
  V.AssignVarRec(TVarRec::PWideChar(u"pw"));
  EXPECT_THROW((void)V.GetAsString(), EConvertError);  // no reader takes this kind
}

TEST(GValueTest, ReferencesAndClasses) {
  TGValue V;
  TValueIntf* Obj = new TValueIntf;
  TIntfPtr<IInterface> Intf(Obj);
  V.SetAsObject(Obj);
  EXPECT_EQ(V.GetAsObject(), Obj);
  EXPECT_EQ(V.GetAsString(), u"TValueIntf");
  EXPECT_EQ(MessageOf([&] { (void)V.GetAsClass(); }), u"Error converting value");
  EXPECT_EQ(V.GetAsInterface(), Intf);
  TObject Plain;
  V.SetAsObject(&Plain);
  EXPECT_THROW((void)V.GetAsInterface(), EConvertError);
  V.SetAsObject(nullptr);
  EXPECT_THROW((void)V.GetAsString(), EAccessViolation);

  V.SetAsInterface(Intf);
  EXPECT_EQ(Obj->RefCount(), 2);
  EXPECT_EQ(V.GetAsObject(), Obj);
  EXPECT_EQ(V.GetAsPointer(), static_cast<Pointer>(Intf.get()));
  EXPECT_THROW((void)V.GetAsString(), EConvertError);
  V.SetAsInteger(1);  // the reference goes with the old datum
  EXPECT_EQ(Obj->RefCount(), 1);

  V.SetAsClass(&TSubValue::ClassInfo());
  EXPECT_EQ(V.GetAsClass(), &TSubValue::ClassInfo());
  EXPECT_EQ(V.GetAsString(), u"TSubValue");
  EXPECT_THROW((void)V.GetAsObject(), EConvertError);

  int Local = 0;
  V.SetAsPointer(&Local);
  EXPECT_EQ(V.GetAsPointer(), &Local);
  EXPECT_THROW((void)V.GetAsInterface(), EConvertError);  // a word is never taken for an interface
  V.SetAsPointer(nullptr);
  EXPECT_EQ(V.GetAsInterface(), nullptr);
  EXPECT_EQ(V.GetAsString(), u"0");
  EXPECT_THROW((void)V.GetAsFloat(), EConvertError);
}

TEST(GValueTest, VariantsByTypeCode) {
  TGValue V;
  const struct {
    TVariant In;
    TValueType Kind;
    const char16_t* Text;
  } Cases[] = {{TVariant(std::int16_t{-3}), vtInteger, u"-3"},
               {TVariant(7), vtInteger, u"7"},
               {TVariant::FromError(9), vtInteger, u"9"},
               {TVariant(1.5), vtFloat, u"1.5"},
               {TVariant::FromCurrency(25000), vtFloat, u"2.5"},
               {TVariant(true), vtBoolean, u"True"},
               {TVariant(u"txt"), vtAnsiString, u"txt"},
               {TVariant(), vtAnsiString, u""},
               {TVariant(std::int64_t{1} << 40), vtAnsiString, u"1099511627776"}};
  for (const auto& C : Cases) {
    V.SetAsVariant(C.In);
    EXPECT_EQ(V.GetValueType(), C.Kind) << StringToUtf8(V.GetAsString());
    EXPECT_EQ(V.GetAsString(), C.Text);
  }
  int Word = 0;
  V.SetAsVariant(TVariant::FromDataWord(varArray, &Word));
  EXPECT_EQ(V.GetValueType(), vtPointer);
  EXPECT_EQ(V.GetAsPointer(), &Word);
  EXPECT_THROW(V.SetAsVariant(TVariant::FromDataWord(varArray | varInteger, &Word)), EConvertError);

  V.AssignVarRec(TVariant(12));
  EXPECT_EQ(V.GetValueType(), vtVariant);
  EXPECT_EQ(V.GetAsInteger(), 12);
  EXPECT_EQ(V.GetAsChar(), '\x0C');
  EXPECT_EQ(V.GetAsPointer(), reinterpret_cast<Pointer>(std::intptr_t{12}));
  EXPECT_EQ(V.GetAsVariant().VarType(), varInteger);
  V.AssignVarRec(std::int64_t{0x100000002});
  EXPECT_EQ(V.GetAsInteger(), 2);
  EXPECT_EQ(V.GetAsString(), u"4294967298");
  EXPECT_EQ(V.GetAsVariant().VarType(), varInt64);
  EXPECT_THROW((void)V.GetAsPointer(), EConvertError);
}

TEST(GValueTest, EqualsAssignAndClone) {
  TGValue A, B;
  A.SetAsFloat(1.2f);
  B.SetAsFloat(1.4f);
  EXPECT_TRUE(A.Equals(B));  // non-text kinds compare as integers
  B.SetAsInteger(1);
  EXPECT_FALSE(A.Equals(B));  // kinds differ
  A.SetAsString(u"abc");
  B.SetAsString(u"ABC");
  EXPECT_FALSE(A.Equals(B));
  B.SetAsString(u"abc");
  EXPECT_TRUE(A.Equals(B));

  TSubValue Sub;
  Sub.SetAsWideString(u"w");
  std::unique_ptr<TGCustomValue> Copy = Sub.Clone();
  EXPECT_EQ(Copy->ClassType(), &TSubValue::ClassInfo());
  EXPECT_TRUE(Copy->Equals(Sub));
  EXPECT_EQ(&Sub.Clone(A), &A);
  EXPECT_EQ(A.GetValueType(), vtWideString);
  A.Assign(nullptr);
  EXPECT_TRUE(A.GetUnassigned());
  B.Assign(&A);
  EXPECT_TRUE(B.GetUnassigned());
  A.Assign(&A);
  EXPECT_THROW((void)A.GetAsWideString(), Exception);
  A.SetAsString(u"self");
  A.SetAsString(A.GetAsString());  // text taken from the value itself
  EXPECT_EQ(A.GetAsString(), u"self");
}
