// Drives TGValue through every setter and getter with arbitrary kinds and texts. Only the
// library's own exceptions may leave an operation.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "GValue/GValue.h"
#include "Runtime/Runtime.h"

using namespace kz;

namespace {

class TFuzzIntf : public TInterfacedObject {
  KZ_CLASS(TFuzzIntf, TInterfacedObject)
};

struct TInput {
  const std::uint8_t* P;
  std::size_t N;

  std::uint8_t Byte() {
    if (!N) return 0;
    --N;
    return *P++;
  }
  template <class T>
  T Raw() {
    T V{};
    unsigned char B[sizeof(T)] = {};
    for (auto& C : B) C = Byte();
    std::memcpy(&V, B, sizeof(T));
    return V;
  }
  String Text() {
    String S(Byte() % 24, Char());
    for (Char& C : S) C = Byte() & 1 ? static_cast<Char>(u"0123456789.-+eEtTrRuUfFaAlLsS x"[Byte() % 31])
                                     : static_cast<Char>(Byte() | Byte() << 8);
    return S;
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  TInput In{Data, Size};
  TGValue V, W;
  TObject Obj;
  TFuzzIntf* Counted = new TFuzzIntf;
  TIntfPtr<IInterface> Intf(Counted);
  const String Keep = In.Text();
  const AnsiString Narrow(Keep.begin(), Keep.end());
  while (In.N) {
    try {
      switch (In.Byte() % 40) {
        case 0: V.SetAsInteger(In.Raw<std::int32_t>()); break;
        case 1: V.SetAsBoolean(In.Byte() & 1); break;
        case 2: V.SetAsChar(static_cast<char>(In.Byte())); break;
        case 3: V.SetAsFloat(In.Raw<float>()); break;
        case 4: V.SetAsString(In.Text()); break;
        case 5: V.SetAsPChar(In.Byte() & 1 ? nullptr : Keep.c_str()); break;
        case 6: V.SetAsPointer(In.Byte() & 1 ? nullptr : &Obj); break;
        case 7: V.SetAsObject(In.Byte() & 1 ? nullptr : In.Byte() & 1 ? &Obj : static_cast<TObject*>(Counted)); break;
        case 8: V.SetAsClass(In.Byte() & 1 ? nullptr : &TGValue::ClassInfo()); break;
        case 9: V.SetAsCurrency(In.Raw<std::int64_t>()); break;
        case 10: {
          switch (In.Byte() % 9) {
            case 0: V.SetAsVariant(TVariant(In.Raw<std::int32_t>())); break;
            case 1: V.SetAsVariant(TVariant(In.Raw<double>())); break;
            case 2: V.SetAsVariant(TVariant(In.Text())); break;
            case 3: V.SetAsVariant(TVariant::FromCurrency(In.Raw<std::int64_t>())); break;
            case 4: V.SetAsVariant(TVariant(In.Raw<std::int64_t>())); break;
            case 5: V.SetAsVariant(TVariant::FromInterface(Intf.get(), In.Byte() & 1)); break;
            case 6: V.SetAsVariant(TVariant::FromDataWord(In.Raw<std::uint16_t>(), &Obj)); break;
            case 7: V.SetAsVariant(TVariant::FromDate(In.Raw<double>())); break;
            default: V.SetAsVariant(TVariant(In.Byte() & 1 ? true : false));
          }
          break;
        }
        case 11: V.SetAsInterface(In.Byte() & 1 ? nullptr : Intf); break;
        case 12: V.SetAsWideString(In.Text()); break;
        case 13: {
          const String T = In.Text();
          const TVariant Var(In.Raw<double>());
          switch (In.Byte() % 18) {
            case vtInteger: V.AssignVarRec(In.Raw<std::int32_t>()); break;
            case vtBoolean: V.AssignVarRec(bool(In.Byte() & 1)); break;
            case vtChar: V.AssignVarRec(static_cast<char>(In.Byte())); break;
            case vtFloat: V.AssignVarRec(In.Raw<long double>()); break;
            case vtString: V.AssignVarRec(TVarRec::ShortString(Narrow)); break;
            case vtPointer: V.AssignVarRec(static_cast<Pointer>(&Obj)); break;
            case vtPChar: V.AssignVarRec(Narrow.c_str()); break;
            case vtObject: V.AssignVarRec(&Obj); break;
            case vtClass: V.AssignVarRec(&TObject::ClassInfo()); break;
            case vtWideChar: V.AssignVarRec(static_cast<char16_t>(In.Raw<std::uint16_t>())); break;
            case vtPWideChar: V.AssignVarRec(TVarRec::PWideChar(T.c_str())); break;
            case vtAnsiString: V.AssignVarRec(Narrow); break;
            case vtCurrency: V.AssignVarRec(TVarRec::Currency(In.Raw<std::int64_t>())); break;
            case vtVariant: V.AssignVarRec(Var); break;
            case vtInterface: V.AssignVarRec(Intf); break;
            case vtWideString: V.AssignVarRec(TVarRec::WideString(T)); break;
            case vtInt64: V.AssignVarRec(In.Raw<std::int64_t>()); break;
            default: V.AssignVarRec(T);
          }
          break;
        }
        case 14: V.Assign(In.Byte() & 1 ? nullptr : &W); break;
        case 15: W.Assign(&V); break;
        case 16: (void)V.Clone()->Equals(V); break;
        case 17: (void)V.Equals(W); break;
        case 18: (void)V.GetAsInteger(); break;
        case 19: (void)V.GetAsBoolean(); break;
        case 20: (void)V.GetAsChar(); break;
        case 21: (void)V.GetAsFloat(); break;
        case 22: (void)V.GetAsString(); break;
        case 23: (void)V.GetAsPointer(); break;
        case 24: (void)V.GetAsObject(); break;
        case 25: (void)V.GetAsClass(); break;
        case 26: (void)V.GetAsCurrency(); break;
        case 27: (void)V.GetAsVariant().AsString(); break;
        case 28: (void)V.GetAsInterface(); break;
        case 29: (void)V.GetAsWideString(); break;
        case 30: (void)std::char_traits<Char>::length(V.GetAsPChar()); break;
        case 31: V.SetAsString(V.GetAsString()); break;
        case 32: V.AssignVarRec(V.GetAsVariant()); break;
        default: (void)V.GetValueType();
      }
    } catch (const Exception&) {
    }
  }
  return 0;
}
