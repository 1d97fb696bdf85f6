#include "api/server/LateCall.h"

#include <string>

#include "common/ResultCodes.h"

namespace zel {
namespace {

constexpr VARTYPE kVariable = VT_BYREF | VT_VARIANT;

bool IsVariable(const VARIANT& argument) {
  return argument.vt == kVariable && argument.pvarVal;
}

/// The description of a method; none for what the library does not know.
class Function {
 public:
  Function(ITypeInfo& info, DISPID id) : info_(info) {
    for (UINT n = 0; SUCCEEDED(info.GetFuncDesc(n, &description_)); ++n) {
      if (description_->memid == id) return;
      info.ReleaseFuncDesc(description_);
    }
    description_ = nullptr;
  }
  ~Function() {
    if (description_) info_.ReleaseFuncDesc(description_);
  }
  Function(const Function&) = delete;
  Function& operator=(const Function&) = delete;

  const FUNCDESC* operator->() const { return description_; }
  explicit operator bool() const { return description_ != nullptr; }

 private:
  ITypeInfo& info_;
  FUNCDESC* description_ = nullptr;
};

/// What a pointer parameter points to; VT_EMPTY for a parameter that is no pointer.
VARTYPE TargetOf(const ELEMDESC& parameter) {
  if (parameter.tdesc.vt != VT_PTR) return VT_EMPTY;
  const VARTYPE target = parameter.tdesc.lptdesc->vt;
  return target == VT_PTR ? VARTYPE{VT_DISPATCH} : target;
}

void CopyNarrow(VARIANT& from, std::array<char, 64>& to) {
  VARIANT text;
  VariantInit(&text);
  if (SUCCEEDED(VariantChangeType(&text, &from, 0, VT_BSTR)) && text.bstrVal) {
    for (std::size_t n = 0; n + 1 < to.size() && text.bstrVal[n]; ++n) {
      to[n] = text.bstrVal[n] < 0x80 ? static_cast<char>(text.bstrVal[n]) : '?';
    }
  }
  VariantClear(&text);
}

std::wstring TextOf(VARIANT& argument) {
  VARIANT& value = IsVariable(argument) ? *argument.pvarVal : argument;
  VARIANT text;
  VariantInit(&text);
  std::wstring result = L"...";  // arrays, objects
  if ((value.vt & (VT_ARRAY | VT_BYREF)) == 0 && value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN &&
      SUCCEEDED(VariantChangeTypeEx(&text, &value, LOCALE_INVARIANT, 0, VT_BSTR)) && text.bstrVal) {
    result = text.bstrVal;
  }
  VariantClear(&text);
  return result;
}

const wchar_t* MeaningOf(HRESULT code) {
  static constexpr struct {
    HRESULT code;
    const wchar_t* meaning;
  } kMeanings[] = {
      {E_FAIL, L"the camera did not answer, or a buffer or file can't be used"},
      {E_HANDLE, L"no camera"},
      {E_INVALIDARG, L"not a valid value"},
      {E_NOTIMPL, L"this camera type does not offer it"},
      {E_OUTOFMEMORY, L"out of memory"},
      {kResultTimeout, L"no frame within the time-out"},
      {kResultCapturing, L"not possible while the camera captures or is closed"},
  };
  for (const auto& row : kMeanings) {
    if (row.code == code) return row.meaning;
  }
  return L"failed";
}

}  // namespace

LateCall::LateCall(ITypeInfo& info, DISPID id, const DISPPARAMS* given) : isGiven_(given != nullptr) {
  if (!given) return;
  arguments_.assign(given->rgvarg, given->rgvarg + given->cArgs);
  slots_.resize(given->cArgs);
  params_ = {arguments_.data(), given->rgdispidNamedArgs, given->cArgs, given->cNamedArgs};
  const Function function(info, id);
  for (UINT n = 0; n < given->cArgs; ++n) {
    if ((given->rgvarg[n].vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY) {
      arguments_[n].vt = kVariable;
      arguments_[n].pvarVal = &given->rgvarg[n];
    }
    // The last argument stands first; names may change the order.
    const UINT position = given->cArgs - 1 - n;
    if (!function || given->cNamedArgs != 0 || position >= static_cast<UINT>(function->cParams)) continue;
    Convert(function->lprgelemdescParam[position], arguments_[n], slots_[n]);
  }
}

LateCall::~LateCall() {
  for (Slot& slot : slots_) VariantClear(&slot.value);
}

void LateCall::Convert(const ELEMDESC& parameter, VARIANT& argument, Slot& slot) {
  const VARTYPE target = TargetOf(parameter);
  const bool isOut = (parameter.paramdesc.wParamFlags & PARAMFLAG_FOUT) != 0;
  const bool isText = target == VT_UI1;
  const bool isVariable = IsVariable(argument);
  if (isText && (isVariable || argument.vt == VT_BSTR)) {
    CopyNarrow(isVariable ? *argument.pvarVal : argument, slot.text);
    if (isOut && isVariable) slot.variable = argument.pvarVal;
    argument.vt = VT_BYREF | VT_UI1;
    argument.byref = slot.text.data();
  } else if (isOut && isVariable && (target == VT_I4 || target == VT_BSTR || target == VT_DISPATCH)) {
    slot.variable = argument.pvarVal;
    slot.value.vt = target;
    argument.vt = static_cast<VARTYPE>(VT_BYREF | target);
    argument.byref = &slot.value.lVal;  // all members of a variant's value start at the same place
  }
}

void LateCall::Return() {
  for (Slot& slot : slots_) {
    if (!slot.variable) continue;
    VariantClear(slot.variable);
    if (slot.value.vt == VT_EMPTY) {
      const std::wstring text(slot.text.begin(), slot.text.end());
      slot.value.vt = VT_BSTR;
      slot.value.bstrVal = SysAllocString(text.c_str());
    }
    *slot.variable = slot.value;
    slot.value.vt = VT_EMPTY;
  }
}

void DescribeFailure(ITypeInfo& info, DISPID id, const DISPPARAMS* params, EXCEPINFO* failure) {
  if (!failure || failure->bstrDescription || failure->pfnDeferredFillIn) return;
  BSTR name = nullptr, help = nullptr;
  if (FAILED(info.GetDocumentation(id, &name, &help, nullptr, nullptr))) return;
  std::wstring text = name ? name : L"";
  text += L"(";
  for (UINT n = params ? params->cArgs : 0; n > 0; --n) {
    text += TextOf(params->rgvarg[n - 1]) + (n > 1 ? L", " : L"");
  }
  wchar_t code[16];
  swprintf(code, 16, L" (0x%08X)", static_cast<unsigned>(failure->scode));
  text += std::wstring(L"): ") + MeaningOf(failure->scode) + code;
  if (help && *help) text += std::wstring(L". ") + help;
  SysFreeString(name);
  SysFreeString(help);
  failure->bstrDescription = SysAllocString(text.c_str());
  if (!failure->bstrSource) failure->bstrSource = SysAllocString(L"ZELCam");
}

}  // namespace zel
