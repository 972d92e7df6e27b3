#include "rq/eval/CandidateValues.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "Host/KXDateTime.h"
#include "rq/eval/LikePattern.h"

namespace {

constexpr std::size_t kMaxValues = 200;  ///< Of a variable.
constexpr int kMaxSteps = 4;             ///< To each side of a constant.

// ---------------------------------------------------------------------------------------------------------------------
// Neighbours

/// The day before or after; the same day at the ends of the calendar.
KXDate NextDay(KXDate date, bool bLater) {
  if (bLater) {
    if (++date.day_ <= KXDate::GetDaysInMonth(date.year_, date.month_)) return date;
    date.day_ = 1;
    if (++date.month_ > 12) {
      date.month_ = 1;
      if (date.year_ < std::numeric_limits<std::int16_t>::max()) ++date.year_;
    }
    return date;
  }
  if (--date.day_ > 0) return date;
  if (--date.month_ == 0) {
    date.month_ = 12;
    if (date.year_ > 1) --date.year_;
  }
  date.day_ = static_cast<std::uint16_t>(KXDate::GetDaysInMonth(date.year_, date.month_));
  return date;
}

/// The second before or after; bTurned tells that midnight lies between.
KXTime NextSecond(const KXTime& time, bool bLater, bool& bTurned) {
  constexpr int kSecondsADay = 24 * 60 * 60;
  int second = (time.GetHour() * 60 + time.GetMinute()) * 60 + time.GetSecond() + (bLater ? 1 : -1);
  bTurned = second < 0 || second >= kSecondsADay;
  second = (second + kSecondsADay) % kSecondsADay;
  return KXTime(static_cast<std::uint16_t>(second / 3600), static_cast<std::uint16_t>(second / 60 % 60),
                static_cast<std::uint16_t>(second % 60), time.nanosecond_);
}

KXDateTime NextSecond(const KXDateTime& moment, bool bLater) {
  bool bTurned = false;
  const KXTime time = NextSecond(moment.GetTime(), bLater, bTurned);
  return KXDateTime(bTurned ? NextDay(moment.GetDate(), bLater) : moment.GetDate(), time);
}

template <class Value>
RowValue Make(const Value& value) {
  return RowValue(TypedFieldValue(value, false));
}

using Values = std::vector<RowValue>;

/// Where a step of one is too small to be one, the next number there is.
void AddNumberNeighbours(double value, int nSteps, Values& values) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double direction : {-1.0, 1.0}) {
    double neighbour = value;
    for (int step = 1; step <= nSteps; ++step) {
      const double next = neighbour + direction;
      neighbour = next != neighbour ? next : std::nextafter(neighbour, direction * kInfinity);
      if (std::isfinite(neighbour)) values.push_back(Make(neighbour));
    }
  }
}

/// Beyond the range of integers they are floats.
void AddIntegerNeighbours(int value, int nSteps, Values& values) {
  for (int step = 1; step <= nSteps; ++step) {
    for (const std::int64_t neighbour : {std::int64_t{value} - step, std::int64_t{value} + step}) {
      const bool bIsInteger = std::in_range<int>(neighbour);
      values.push_back(bIsInteger ? Make(static_cast<int>(neighbour)) : Make(static_cast<double>(neighbour)));
    }
  }
}

constexpr bool IsLetterOrDigit(wchar_t c) {
  return (L'0' <= c && c <= L'9') || (L'A' <= c && c <= L'Z') || (L'a' <= c && c <= L'z');
}

/// Longer ones, the shorter one, and those with the letter or digit before or after the last one.
void AddTextNeighbours(const KXString& value, Values& values) {
  values.push_back(Make(value + L"a"));
  if (!value.empty()) {
    const KXString start = value.substr(0, value.size() - 1);
    values.push_back(Make(start));
    const wchar_t last = value[value.size() - 1];
    for (const wchar_t next : {static_cast<wchar_t>(last - 1), static_cast<wchar_t>(last + 1)}) {
      if (IsLetterOrDigit(last) && IsLetterOrDigit(next)) values.push_back(Make(start + next));
    }
  }
  values.push_back(Make(value + L"!"));
}

/// Steps away from a date or a moment in both directions.
template <class Value, class Next>
void AddCalendarNeighbours(const Value& value, int nSteps, Next next, Values& values) {
  for (const bool bLater : {false, true}) {
    Value neighbour = value;
    for (int step = 1; step <= nSteps; ++step) values.push_back(Make(neighbour = next(neighbour, bLater)));
  }
}

void AddNeighbours(const RowValue& value, int nSteps, Values& values) {
  if (value.IsNull()) return;
  const TypedFieldValue& typed = value.Get();
  switch (typed.GetKXDataType()) {
    case KXInt4Data:
      return AddIntegerNeighbours(typed.ToInteger(), nSteps, values);
    case KXDoubleData:
    case KXNumericData:
      return AddNumberNeighbours(typed.ToFloat(), nSteps, values);
    case KXVarCharData:
      return AddTextNeighbours(typed.ToString(), values);
    case KXDateData:
      return AddCalendarNeighbours(typed.ToDate(), nSteps, NextDay, values);
    case KXDateTimeData: {
      const KXDateTime moment = typed.ToDateTime();
      const auto nextSecond = [](const KXDateTime& from, bool bLater) { return NextSecond(from, bLater); };
      const auto nextDay = [](const KXDateTime& from, bool bLater) {
        return KXDateTime(NextDay(from.GetDate(), bLater), from.GetTime());
      };
      AddCalendarNeighbours(moment, nSteps, nextSecond, values);
      return AddCalendarNeighbours(moment, 1, nextDay, values);
    }
    case KXTimeData: {
      bool bTurned = false;
      for (const bool bLater : {false, true}) {
        const KXTime neighbour = NextSecond(typed.ToTime(), bLater, bTurned);
        if (!bTurned) values.push_back(Make(neighbour));
      }
      return;
    }
    default:
      return;
  }
}

/// A number between each two that follow one another, for there may be no neighbour there.
void AddNumbersBetween(Values& values) {
  std::vector<double> numbers;
  for (const RowValue& value : values) {
    if (value.IsNull()) continue;
    const KXDataType type = value.Get().GetKXDataType();
    if (type == KXInt4Data || type == KXDoubleData || type == KXNumericData) numbers.push_back(value.Get().ToFloat());
  }
  std::ranges::sort(numbers);
  for (std::size_t i = 1; i < numbers.size(); ++i) {
    if (numbers[i] - numbers[i - 1] > 0 && numbers[i] - numbers[i - 1] < 1) {
      values.push_back(Make(std::midpoint(numbers[i - 1], numbers[i])));
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Groups

/// Variables that meet one another, as disjoint sets.
class Groups {
 public:
  explicit Groups(std::size_t nVariables) : m_parents(nVariables) { std::iota(m_parents.begin(), m_parents.end(), 0); }

  std::size_t Find(std::size_t variable) {
    while (m_parents[variable] != variable) variable = m_parents[variable] = m_parents[m_parents[variable]];
    return variable;
  }
  void Join(std::size_t a, std::size_t b) { m_parents[Find(a)] = Find(b); }

 private:
  std::vector<std::size_t> m_parents;
};

/// What the variables of a group meet.
struct Group {
  Values m_constants;
  int m_nVariables = 0;
};

void AddUnlessThere(const RowValue& value, Values& values) {
  const bool bIsThere = std::ranges::any_of(values, [&value](const RowValue& other) {
    if (value.IsNull() || other.IsNull()) return value.IsNull() == other.IsNull();
    return RowValue::Compare(value, other) == 0;
  });
  if (!bIsThere) values.push_back(value);
}

/// The text of a constant; none for anything else.
std::optional<KXString> FindText(const ConditionEvaluator& evaluator, const RqExpr& expr) {
  const std::optional<RowValue> constant = evaluator.FindConstant(expr);
  return constant && constant->IsText() ? std::optional(constant->Get().ToString()) : std::nullopt;
}

/// Texts that the pattern of a LIKE matches.
void AddMatches(const ConditionEvaluator& evaluator, const std::vector<const RqExpr*>& operands, Values& constants) {
  const auto pattern = FindText(evaluator, *operands[RqExprCondLike::kPatternString]);
  if (!pattern) return;
  std::optional<wchar_t> escape;
  if (operands.size() > RqExprCondLike::kEscapeString) {
    const auto text = FindText(evaluator, *operands[RqExprCondLike::kEscapeString]);
    if (!text || text->size() != 1) return;
    escape = (*text)[0];
  }
  const auto made = LikePattern::Make(*pattern, escape);
  if (!made) return;
  constants.push_back(Make(made->MakeMatch(L"")));
  constants.push_back(Make(made->MakeMatch(L"x")));
}

void AddMeeting(const ConditionEvaluator& evaluator, const ConditionEvaluator::Meeting& meeting, Groups& groups,
                std::vector<Group>& byRoot) {
  const auto isVariable = [&](const RqExpr* pExpr) { return evaluator.FindVariable(*pExpr).has_value(); };
  const auto first = std::ranges::find_if(meeting.m_exprs, isVariable);
  if (first == meeting.m_exprs.end()) return;
  Values& constants = byRoot[groups.Find(*evaluator.FindVariable(**first))].m_constants;
  if (meeting.m_bIsLike) return AddMatches(evaluator, meeting.m_exprs, constants);
  for (const RqExpr* const pExpr : meeting.m_exprs) {
    const auto constant = evaluator.FindConstant(*pExpr);
    if (constant && !constant->IsNull()) constants.push_back(*constant);
  }
}

/// The values to try, without doubles. Constants come first, so that what is found reads like the conditions.
Values MakeValues(const Group& group, bool& bAreAll) {
  Values all = group.m_constants;
  if (all.empty()) all.push_back(Make(1));
  const int nSteps = std::clamp(group.m_nVariables, 1, kMaxSteps);
  const Values constants = all;
  for (const RowValue& value : constants) {
    if (all.size() > 8 * kMaxValues) break;
    AddNeighbours(value, nSteps, all);
  }
  AddNumbersBetween(all);
  Values distinct;
  for (const RowValue& value : all) {
    if (distinct.size() == kMaxValues) {
      bAreAll = false;
      break;
    }
    AddUnlessThere(value, distinct);
  }
  distinct.emplace_back();
  return distinct;
}

}  // namespace

CandidateValues::CandidateValues(const ConditionEvaluator& evaluator) {
  const std::size_t nVariables = evaluator.GetVariables().size();
  Groups groups(nVariables);
  for (const ConditionEvaluator::Meeting& meeting : evaluator.GetMeetings()) {
    std::optional<std::size_t> previous;
    for (const RqExpr* const pExpr : meeting.m_exprs) {
      const std::optional<std::size_t> variable = evaluator.FindVariable(*pExpr);
      if (variable && previous) groups.Join(*variable, *previous);
      if (variable) previous = variable;
    }
  }
  std::vector<Group> byRoot(nVariables);
  for (std::size_t i = 0; i < nVariables; ++i) ++byRoot[groups.Find(i)].m_nVariables;
  for (const auto& meeting : evaluator.GetMeetings()) AddMeeting(evaluator, meeting, groups, byRoot);
  m_values.resize(nVariables);
  for (std::size_t i = 0; i < nVariables; ++i) {
    const std::size_t root = groups.Find(i);
    if (m_values[root].empty()) m_values[root] = MakeValues(byRoot[root], m_bAreAll);
    m_values[i] = m_values[root];
  }
}
