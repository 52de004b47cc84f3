// The component filer reading arbitrary bytes: a tree of the filer tests' components
// (published values of every kind, a sub-object, an owned collection, defined list and binary
// properties) with a collection whose items keep their classes. Whatever it accepts must write back, read
// again and write the very same bytes.
#include <memory>

#include "FuzzSupport.h"
#include "GStreams/GStreams.h"
#include "Runtime/FilerClasses.h"

using namespace kz;
using namespace kztest;
using kzfuzz::Check;

namespace {

// The test gadget, plus a collection whose items keep their own classes.
class TWidget : public TGadget {
  KZ_CLASS(TWidget, TGadget)
 public:
  explicit TWidget(TComponent* AOwner) : TGadget(AOwner) {}
  void DefineProperties(TFiler* Filer) override {
    inherited::DefineProperties(Filer);
    Filer->DefineProperty(
        u"Shapes", [this](TReader* R) { TGSpecialFiler(R).ReadCollection(&FShapes); },
        [this](TWriter* W) { TGSpecialFiler(W).WriteCollection(&FShapes); }, FShapes.GetCount() > 0);
  }
  TCollection FShapes{&TTag::ClassInfo()};
};

void RegisterOnce() {
  static const bool Done = [] {
    RegisterFilerTestClasses();
    RegisterClass(TWidget::ClassInfo());
    return true;
  }();
  (void)Done;
}

TBytes Written(TComponent* Root) {
  TBytesStream M;
  TWriter(&M).WriteRootComponent(Root);
  return M.GetBytes();
}

// The first byte chooses what the rest holds: a whole component tree, or a collection
// written by the item-class filer.
void Fuzz(std::uint8_t Mode, const TBytes& Data) {
  TBytesStream In(Data);
  if (Mode & 1) {
    TCollection C(&TTag::ClassInfo());
    if (!kzfuzz::Accepts([&] {
          TReader R(&In);
          TGSpecialFiler(&R).ReadCollection(&C);
        }))
      return;
    auto WriteOut = [](TCollection& From) {
      TBytesStream M;
      TWriter W(&M);
      TGSpecialFiler(&W).WriteCollection(&From);
      return M.GetBytes();
    };
    const TBytes First = WriteOut(C);
    TCollection Again(&TTag::ClassInfo());
    TBytesStream Back(First);
    Check(kzfuzz::Accepts([&] {
            TReader R(&Back);
            TGSpecialFiler(&R).ReadCollection(&Again);
          }),
          "a written collection does not read back");
    Check(WriteOut(Again) == First, "a collection read back writes differently");
    return;
  }
  std::unique_ptr<TComponent> Root;
  if (!kzfuzz::Accepts([&] { Root = TReader(&In).ReadRootComponent(); })) return;
  const TBytes First = Written(Root.get());
  std::unique_ptr<TComponent> Copy;
  TBytesStream Back(First);
  Check(kzfuzz::Accepts([&] { Copy = TReader(&Back).ReadRootComponent(); }), "a written tree does not read back");
  Check(Written(Copy.get()) == First, "a tree read back writes differently");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  RegisterOnce();
  GLoadedOrder.clear();  // the test classes note every load
  if (!Size) return 0;
  Fuzz(Data[0], TBytes(Data + 1, Data + Size));
  return 0;
}
