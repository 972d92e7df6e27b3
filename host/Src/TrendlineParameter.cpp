#include "Host/TrendlineParameter.h"

#include <iterator>

#include "Host/KXAssert.h"

namespace {

template <std::size_t kNumWords>
KXString WordAt(const wchar_t* const (&words)[kNumWords], int type) {
  KX_ASSERT_TEXT(type >= 0 && type < static_cast<int>(kNumWords), L"no such kind of trend line");
  return words[type];
}

}  // namespace

KXString TrendlineParameter::ToString(ModelType type) {
  static constexpr const wchar_t* kWords[] = {L"LINEAR",      L"POWER",      L"EXPONENTIAL",
                                              L"LOGARITHMIC", L"POLYNOMIAL", L"MOVING_AVERAGE"};
  static_assert(std::size(kWords) == kMovingAverage + 1);
  return WordAt(kWords, type);
}

KXString TrendlineParameter::ToString(ResultType type) {
  static constexpr const wchar_t* kWords[] = {L"VALUE", L"MODEL", L"SEQUENCE"};
  static_assert(std::size(kWords) == kSequence + 1);
  return WordAt(kWords, type);
}
