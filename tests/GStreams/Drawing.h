// A filer test gadget that also stores a collection whose items keep their own classes;
// shared by the item-class filer tests and the filer fuzz target (no test framework here).
#pragma once

#include "GStreams/GStreams.h"
#include "Runtime/FilerClasses.h"

namespace kztest {

class TDrawing : public TGadget {
  KZ_CLASS(TDrawing, TGadget)
 public:
  explicit TDrawing(TComponent* AOwner) : TGadget(AOwner) {}
  void DefineProperties(TFiler* Filer) override {
    inherited::DefineProperties(Filer);
    Filer->DefineProperty(
        u"Shapes", [this](TReader* R) { TGSpecialFiler(R).ReadCollection(&FShapes); },
        [this](TWriter* W) { TGSpecialFiler(W).WriteCollection(&FShapes); }, true);
  }
  TCollection FShapes{&TTag::ClassInfo()};
};

}  // namespace kztest
