#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "Host/ErrorMessage.h"
#include "Host/SUSystemConfig.h"
#include "Host/TypedFieldValue.h"

namespace {

using Owned = std::unique_ptr<RqExprLiteral>;
using Owner = ObjPoolGuard<RqExprLiteral>;

const double kNaN = std::numeric_limits<double>::quiet_NaN();

RqExprStringLiteral* Quoted(const wchar_t* text, RqExprStringLiteral::StringWrapperSymbol symbol) {
  auto* const pLiteral = new RqExprStringLiteral(text);
  pLiteral->SetStringWrapperSymbol(symbol);
  return pLiteral;
}

/// "Integer 5", "Null ". The mark of a placeholder and a precision stand behind it.
std::string Describe(const RqExprLiteral& literal) {
  const std::string kind(GetRqNodeTypeName(literal.GetObjectType()).substr(std::strlen("RqExpr")));
  std::string text = kind.substr(0, kind.find("Literal")) + " " + literal.ToCanonicalCSVFormat().ToUTF8();
  if (literal.IsIntegerLiteral() && static_cast<const RqExprIntegerLiteral&>(literal).IsPlaceHolder()) text += "?";
  if (literal.IsDateTimeLiteral()) {
    const short precision = static_cast<const RqExprDateTimeLiteral&>(literal).GetPrecision();
    if (precision != 0) text += " (" + std::to_string(precision) + ")";
  }
  return text;
}

// Comparison

TEST(StringLiterals, CompareAsTheServerIsConfigured) {
  const std::tuple<const wchar_t*, const wchar_t*, bool, bool, int> rows[] = {
      {L"abc", L"ABC", true, false, 1},    {L"abc", L"ABC", false, true, 0},   {L"abc", L"ABD", false, false, -1},
      {L"abc", L"abc  ", true, true, -1},  {L"abc ", L"ABC", false, true, 1},  {L"abc ", L"ABC", true, false, 1},
      {L" abc", L"abc", true, false, -1},  {L"abc\t", L"abc", true, false, 1}, {L"\xdc", L"\xfc", false, true, 0},
      {L"\xdc", L"\xfc", true, false, -1}, {L"", L"  ", true, true, -1},
  };
  for (const auto& [leftText, rightText, bCaseSensitive, bEquivalent, order] : rows) {
    SCOPED_TRACE(KXString(leftText) + L" and " + rightText + (bCaseSensitive ? L" by case" : L""));
    // Made before the mode is set: it is read at each comparison.
    const RqExprStringLiteral left(leftText), right(rightText);
    SUSystemConfig::GetSystemConfig().SetCaseSensitive(bCaseSensitive);
    EXPECT_EQ(left.IsEquivalent(right, RqEquivalence()), bEquivalent);
    EXPECT_EQ(right.IsEquivalent(left, RqEquivalence()), bEquivalent);
    EXPECT_EQ(left.IsShallowLessThan(right), order < 0);
    EXPECT_EQ(right.IsShallowLessThan(left), order > 0);
    EXPECT_EQ(left.CompareShallow(right) < 0, order < 0);
    EXPECT_EQ(left.CompareShallow(right) > 0, order > 0);
  }
  SUSystemConfig::GetSystemConfig().SetCaseSensitive(true);
}

TEST(FloatLiterals, HoldNaNForNothingElse) {
  const RqExprFloatLiteral nan(kNaN), otherNaN(kNaN), one(1.0);
  for (const RqExprFloatLiteral* pOther : {&nan, &otherNaN, &one}) {
    EXPECT_FALSE(nan.IsEquivalent(*pOther, RqEquivalence()) || pOther->IsEquivalent(nan, RqEquivalence()));
    EXPECT_FALSE(nan.IsShallowLessThan(*pOther) || pOther->IsShallowLessThan(nan));
    EXPECT_TRUE(nan.CompareShallow(*pOther) == 0);
  }
}

// What literals say of their values

TEST(Literals, TellTheirValues) {
  using String = RqExprStringLiteral;
  const Owned quoted(Quoted(L"it's", String::kDoubleQuote));
  // The text, null: asking for it ends the process; whether it counts as more than zero; the text of the value, if any.
  const std::tuple<Owned, const char*, bool, const char*> rows[] = {
      {Owned(Quoted(L"it's \"x\"", String::kDoubleQuote)), "\"it's \"\"x\"\"\"", true, "it's \"x\""},
      {Owned(Quoted(L"it's \"x\"", String::kUnknown)), "'it''s \"x\"'", true, "it's \"x\""},
      {Owned(new String(L"")), "''", false, ""},
      {Owned(static_cast<RqExprLiteral*>(quoted->DeepExprCopy(true))), "'it''s'", true, "it's"},
      {Owned(new RqExprIntegerLiteral(-2147483647 - 1, false)), "-2147483648", true, "-2147483648"},
      {Owned(new RqExprIntegerLiteral(0, true)), "0", false, "0"},
      {Owned(new RqExprFloatLiteral(-0.0)), "-0.0", false, "-0.0"},
      {Owned(new RqExprNumberLiteral(Number(L"12345678901234567890.5"))), "1.2345678901234567e+19", true,
       "12345678901234567890.5"},
      {Owned(new RqExprNumberLiteral()), "0.0", false, "0"},
      {Owned(new RqExprDateLiteral(KXDate(1999, 2, 3))), "'1999-02-03'", true, "1999-02-03"},
      {Owned(new RqExprDateLiteral(kxdatetime::kCurrentDate)), "'CURRENT_DATE'", true, "CURRENT_DATE"},
      {Owned(new RqExprTimeLiteral(KXTime(1, 2, 3, 456'789'000))), "'01:02:03.456'", true, "01:02:03.456789000"},
      {Owned(new RqExprDateTimeLiteral(KXDateTime(1999, 2, 3, 4, 5, 6), 0)), "'1999-02-03 04:05:06.000'", true,
       "1999-02-03 04:05:06"},
      {Owned(new RqExprIntervalLiteral(L"")), nullptr, true, nullptr},
      {Owned(new RqExprNullLiteral()), "", false, nullptr},
  };
  for (const auto& [pLiteral, csv, bNonZero, text] : rows) {
    SCOPED_TRACE(GetRqNodeTypeName(pLiteral->GetObjectType()));
    if (csv) {
      EXPECT_EQ(pLiteral->ToCanonicalCSVFormat().ToUTF8(), csv);
    } else {
      EXPECT_DEATH(pLiteral->ToCanonicalCSVFormat(), "SQORRqExprLiteral");
    }
    EXPECT_EQ(pLiteral->IsNonZeroValue(nullptr), bNonZero);
    const std::unique_ptr<PropertyValue> pValue(pLiteral->MakePropertyValue());
    ASSERT_EQ(pValue != nullptr, text != nullptr);
    if (!pValue) continue;
    EXPECT_EQ(pValue->StringFrom().ToUTF8(), text);
    Owner owner;
    const RqExprLiteral* const pBack = RqExprLiteral::MakeRqExprLiteral(owner, pValue.get());
    EXPECT_EQ(owner.Get(), pBack);
    EXPECT_EQ(pBack->GetObjectType(), pLiteral->GetObjectType()) << "the value has the literal's type";
    EXPECT_EQ(std::unique_ptr<PropertyValue>(pBack->MakePropertyValue())->StringFrom(), pValue->StringFrom());
  }
}

// Literals from values

TEST(LiteralFromPropertyValue, JoinsAVectorAndNeedsAValue) {
  PropertyValueStringVector vector(KXStringVector{L"a", L"b"});
  Owner owner;
  EXPECT_EQ(Describe(*RqExprLiteral::MakeRqExprLiteral(owner, &vector)), "String 'a;b'");
  EXPECT_DEATH(RqExprLiteral::MakeRqExprLiteral(owner, nullptr), "pPropertyValue");
}

// Literals from fields

/// Bytes as they lie in a record.
template <class T>
ByteVector BytesOf(const T& value) {
  ByteVector bytes(sizeof(T));
  std::memcpy(bytes.data(), &value, sizeof(T));
  return bytes;
}

ByteVector operator+(ByteVector lhs, const ByteVector& rhs) {
  lhs.insert(lhs.end(), rhs.begin(), rhs.end());
  return lhs;
}

ByteVector Narrow(const std::string& text) { return ByteVector(text.begin(), text.end()); }

ByteVector Wide(const std::wstring& text) {
  ByteVector bytes;
  for (const wchar_t character : text) bytes = bytes + BytesOf(character);
  return bytes;
}

ByteVector Counted(std::uint32_t count, const ByteVector& text) { return BytesOf(count) + text; }

ByteVector NumberBytes(const wchar_t* text) {
  ByteVector bytes;
  Number(text).ToByteVector(bytes);
  return bytes;
}

const char* const kSame = "same";
const char* const kRaises = "raises";

/// A field, and the literals that a row record and a typed value of these bytes become; null: none stands for the type.
struct FieldRow {
  KXDataType type;
  ByteVector field;
  const char* literal;
  const char* typedLiteral = kSame;
  bool bUnicode = false;
};

/// Each type at least once.
std::vector<FieldRow> FieldRows() {
  return {
      {KXBitData, {1}, "Integer 1", "String '1'"},
      {KXInt1Data, {0xff}, "Integer -1"},
      {KXBoolean, {0x80}, "Integer -128", "String '-128'"},
      {KXUInt1Data, {0xff}, "Integer 255"},
      {KXInt2Data, BytesOf(std::int16_t{-2}), "Integer -2"},
      {KXUInt2Data, BytesOf(std::uint16_t{65534}), "Integer 65534"},
      {KXInt4Data, BytesOf(std::int32_t{-3}), "Integer -3"},
      {KXUInt4Data, BytesOf(std::uint32_t{2147483647}), "Integer 2147483647"},
      {KXUInt4Data, BytesOf(std::uint32_t{2147483648}), "Float 2147483648.0", kRaises},
      {KXFloatData, BytesOf(2.5f), "Float 2.5"},
      {KXDoubleData, BytesOf(0.1), "Float 0.1"},
      {KXCharData, Wide(std::wstring(L"ab  \0cd", 7)), "String 'ab'", kSame, true},
      {KXCharData, Narrow(std::string("ab  \0cd", 7)), "String 'ab  '", "String 'ab'"},
      {KXCharData, Narrow(std::string("\xc3\xbc\0", 3)), "String '\xc3\xbc'"},
      {KXVarCharData, Counted(3, Wide(L"a\x4e00 zz")), "String 'a\xe4\xb8\x80 '", kSame, true},
      {KXLongVarCharData, Counted(2, Narrow("abc")), "String 'ab'"},
      {KXNumericData, NumberBytes(L"1.25"), "Number 1.25"},
      {KXDecimalData, NumberBytes(L"-1.25"), "Number -1.25"},
      {KXDateData, BytesOf(KXDate(1999, 2, 3)), "Date '1999-02-03'"},
      {KXTimeData, BytesOf(KXTime(1, 2, 3)), "Time '01:02:03.000'"},
      {KXDateTimeData, BytesOf(KXDateTime(1999, 2, 3, 4, 5, 6)), "DateTime '1999-02-03 04:05:06.000'"},
      {KXTimeStampData, BytesOf(KXDateTime(1999, 2, 3, 4, 5, 6)), "DateTime '1999-02-03 04:05:06.000'"},
      {KXBinaryData, {0xab}, nullptr, "String 'AB'"},
      {KXVarBinaryData, {0xab}, nullptr, "String 'AB'"},
      {KXLongVarBinaryData, {0xab}, nullptr, "String 'AB'"},
      {KXObjectData, {0xab}, nullptr, "String 'AB'"},
      {KXIntervalData, Counted(1, Narrow("a")), nullptr, "String 'a'"},
      {KXUnknown, {}, nullptr, "String ''"},
      {KXMoneyData, ByteVector(8), nullptr},
  };
}

TEST(LiteralFromTypedFieldValue, HasItsTypeAndValue) {
  std::set<KXDataType> types;
  for (const FieldRow& row : FieldRows()) {
    SCOPED_TRACE(row.type);
    types.insert(row.type);
    const TypedFieldValue value(row.type, row.field, 0, row.bUnicode);
    const char* const literal = row.typedLiteral == kSame ? row.literal : row.typedLiteral;
    if (!literal) {
      EXPECT_DEATH(RqExprLiteral::MakeRqExprLiteral(value), "SQORRqExprLiteral");
    } else if (literal == kRaises) {
      EXPECT_THROW(RqExprLiteral::MakeRqExprLiteral(value), ErrorMessage);
    } else {
      EXPECT_EQ(Describe(*Owned(RqExprLiteral::MakeRqExprLiteral(value))), literal);
    }
  }
  EXPECT_EQ(types.size(), static_cast<std::size_t>(KXMaxType)) << "no type is left out";
}

TEST(RecordField, BecomesALiteral) {
  // Text that a zero ends; a number that is no type.
  std::vector<FieldRow> rows = FieldRows();
  rows.push_back({KXVarCharData, Counted(3, Wide(std::wstring(L"a\0b", 3))), "String 'a'", kSame, true});
  rows.push_back({KXMaxType, {1}, nullptr});
  // Three odd bytes in front, the second of them the null flag, so that no field is aligned.
  constexpr int kValueOffset = 3;
  for (const FieldRow& row : rows) {
    SCOPED_TRACE(row.type);
    ByteVector record = ByteVector{9, 0, 9} + row.field;
    const auto decode = [&](Owner& owner, int nullOffset) {
      return RqExprLiteral::MakeRqExprLiteral(owner, row.type, kValueOffset, nullOffset, record.data(), row.bUnicode);
    };
    Owner owner;
    for (const int nullOffset : {0, 1}) {
      if (row.literal) {
        EXPECT_EQ(Describe(*decode(owner, nullOffset)), row.literal);
        EXPECT_TRUE(owner.IsPooled());
      } else {
        EXPECT_DEATH(decode(owner, nullOffset), "SQORRqExprLiteral");
      }
    }
    record[1] = 1;
    EXPECT_EQ(Describe(*decode(owner, 1)), "Null ") << "the null flag goes before the type";
  }
  Owner owner;
  EXPECT_DEATH(RqExprLiteral::MakeRqExprLiteral(owner, KXInt4Data, 0, 0, nullptr, false), "pKXListstreamRecord");
}

// Pools

const auto kSetValue = [](RqExprIntegerLiteral& literal, int value) { literal.SetValue(value); };
using IntegerPool = TypedObjPool<RqExprIntegerLiteral>;

TEST(LiteralPools, KeepAHundredObjects) {
  IntegerPool pool;
  const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
  {
    std::vector<Owner> owners(102);
    for (int i = 0; i < 102; ++i) {
      EXPECT_EQ(pool.Make(owners[i], kSetValue, i)->GetValue(), i);
      EXPECT_EQ(owners[i].IsPooled(), i < 100) << i;
    }
    EXPECT_EQ(pool.GetPoolSize(), 100u);
    EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore + 102);
  }
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore + 100) << "what is not pooled is deleted";
}

TEST(LiteralPools, GiveTheLastReturnedObjectWithItsFlags) {
  IntegerPool pool;
  Owner owner;
  RqExprIntegerLiteral* const pUsed = pool.Make(owner, kSetValue, 1);
  pUsed->SetPlaceHolder(true);
  owner.Reset();
  const RqExprIntegerLiteral* const pAgain = pool.Make(owner, kSetValue, 2);
  EXPECT_EQ(pAgain, pUsed);
  EXPECT_EQ(pAgain->GetValue(), 2);
  EXPECT_TRUE(pAgain->IsPlaceHolder());
}

TEST(LiteralPools, AGuardLetsGoOfWhatItHeld) {
  IntegerPool pool;
  Owner owner;
  const RqExprLiteral* const pFirst = pool.Make(owner, kSetValue, 1);
  const RqExprLiteral* const pSecond = pool.Make(owner, kSetValue, 2);
  EXPECT_EQ(pool.Make(owner, kSetValue, 3), pFirst) << "it went back once the second was held";

  const std::unique_ptr<RqExprLiteral> pReleased(owner.ReleaseOwnership());
  EXPECT_EQ(pReleased.get(), pFirst);
  EXPECT_FALSE(owner);
  EXPECT_EQ(pool.GetPoolSize(), 1u) << "the pool counts on the second alone";
  EXPECT_EQ(pool.Make(owner, kSetValue, 4), pSecond);

  auto* const pUnpooled = new RqExprNullLiteral();
  owner.GiveOwnership(nullptr, pUnpooled);
  EXPECT_EQ(owner.Get(), pUnpooled);
  EXPECT_FALSE(owner.IsPooled());
}

TEST(LiteralPools, TakeAValueFromTheLiteralThatTheGuardHeld) {
  TypedObjPool<RqExprStringLiteral> pool;
  const auto setString = [](RqExprStringLiteral& literal, const KXString& value) { literal.SetString(value); };
  const KXString text(L"a text of its own");
  std::vector<Owner> owners(101);
  for (Owner& owner : owners) (void)pool.Make(owner, setString, text);
  for (Owner& owner : {std::ref(owners.front()), std::ref(owners.back())}) {
    SCOPED_TRACE(owner.IsPooled() ? "pooled" : "deleted");
    const KXString& held = static_cast<const RqExprStringLiteral&>(*owner).GetString();
    EXPECT_EQ(pool.Make(owner, setString, held)->GetString(), text);
  }
}

/// Throws on demand.
struct Fragile {
  static inline bool s_bThrows = false;
  explicit Fragile(int value) : m_value(value) {
    if (s_bThrows) throw std::runtime_error("no value");
  }
  virtual ~Fragile() = default;
  int m_value;
};

TEST(ObjectPools, StandAConstructorThatThrows) {
  TypedObjPool<Fragile> pool;
  const auto setValue = [](Fragile& object, int value) { object.m_value = value; };
  ObjPoolGuard<Fragile> owner;
  Fragile::s_bThrows = true;
  EXPECT_THROW(pool.Make(owner, setValue, 1), std::runtime_error);
  EXPECT_FALSE(owner);
  EXPECT_EQ(pool.GetPoolSize(), 0u);
  Fragile::s_bThrows = false;
  EXPECT_EQ(pool.Make(owner, setValue, 2)->m_value, 2) << "the lock is free";
}

TEST(LiteralPools, AreSharedByThreads) {
  constexpr int kRounds = 2000;
  // Each thread makes literals for the other, which checks them and gives them back.
  std::vector<std::vector<Owner>> handed(2);
  for (auto& owners : handed) owners = std::vector<Owner>(kRounds);
  const auto onTwoThreads = [](const std::function<void(int)>& work) {
    std::thread other(work, 1);
    work(0);
    other.join();
  };
  onTwoThreads([&handed](int thread) {
    for (int i = 0; i < kRounds; ++i) {
      Owner passing;
      EXPECT_EQ(FastMakeStringLiteral(passing, L"passing")->GetString(), L"passing");
      FastMakeIntegerLiteral(handed[1 - thread][i], thread * kRounds + i);
    }
  });
  onTwoThreads([&handed](int thread) {
    for (int i = 0; i < kRounds; ++i) {
      Owner& owner = handed[thread][i];
      EXPECT_EQ(static_cast<RqExprIntegerLiteral&>(*owner).GetValue(), (1 - thread) * kRounds + i);
      owner.Reset();
    }
  });
  for (std::size_t i = 0; i < global_integerPools.size(); ++i) {
    EXPECT_LE(global_integerPools[i].GetPoolSize(), IntegerPool::kMaxPoolSize);
  }
}

}  // namespace
