#pragma once

#include <cstdint>

#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprScalar.h"

// Functions of text. Positions count from 1.

/// left || right
class RqExprConcat final : public RqBinaryOperator<RqExprConcat, kRqExprConcat, false> {
 public:
  using RqBinaryOperator::RqBinaryOperator;
};

/// The length in characters.
class RqExprCharLength final : public RqScalarFunction<RqExprCharLength, kRqExprCharLength, RqOneOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The length in bytes.
class RqExprOctetLength final : public RqScalarFunction<RqExprOctetLength, kRqExprOctetLength, RqOneOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The length in bits.
class RqExprBitLength final : public RqScalarFunction<RqExprBitLength, kRqExprBitLength, RqOneOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The length in characters, without the blanks at the end.
class RqExprLength final : public RqScalarFunction<RqExprLength, kRqExprLength, RqStringOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The text in upper case.
class RqExprUpper final : public RqScalarFunction<RqExprUpper, kRqExprUpper, RqOneOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The text in lower case.
class RqExprLower final : public RqScalarFunction<RqExprLower, kRqExprLower, RqOneOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The code of the first character.
class RqExprAscii final : public RqScalarFunction<RqExprAscii, kRqExprAscii, RqStringOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The character of a code.
class RqExprChar final : public RqScalarFunction<RqExprChar, kRqExprChar, RqStringOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

struct RqPositionOperands {
  enum { kStringOperand, kSourceOperand, kNumOperands };
};
/// Where a text begins in the source; 0 if it does not stand there.
class RqExprPosition final : public RqScalarFunction<RqExprPosition, kRqExprPosition, RqPositionOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

struct RqLocateOperands {
  enum { kStringOperand, kSourceOperand, kStartPosition, kNumOperands };
};
/// As RqExprPosition, at or behind a position. A null one is the start of the source.
class RqExprLocate final : public RqScalarFunction<RqExprLocate, kRqExprLocate, RqLocateOperands, 2> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

struct RqSubstringOperands {
  enum { kStringOperand, kStartOperand, kLengthOperand, kNumLeadingTokensOperand, kDelimiterOperand, kNumOperands };
};
/// A part of the text: from a position on, in a length or to the end, or so many leading tokens of those that a
/// delimiter parts. The operands of the form that is not meant are null.
class RqExprSubstring final : public RqScalarFunction<RqExprSubstring, kRqExprSubstring, RqSubstringOperands, 1> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

struct RqReplaceOperands {
  enum { kStringOperand, kOldStringOperand, kNewStringOperand, kNumOperands };
};
/// The text with the new string wherever the old one stood.
class RqExprReplace final : public RqScalarFunction<RqExprReplace, kRqExprReplace, RqReplaceOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

struct RqInsertOperands {
  enum { kStringOperand, kStartPositionOperand, kLengthOperand, kNewStringOperand, kNumOperands };
};
/// The text with a part of it, given by its start and length, replaced by the new string.
class RqExprInsert final : public RqScalarFunction<RqExprInsert, kRqExprInsert, RqInsertOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

struct RqStringAndCount {
  enum { kStringOperand, kCountOperand, kNumOperands };
};
/// So many characters from the start.
class RqExprLeft final : public RqScalarFunction<RqExprLeft, kRqExprLeft, RqStringAndCount> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// So many characters up to the end.
class RqExprRight final : public RqScalarFunction<RqExprRight, kRqExprRight, RqStringAndCount> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The text so many times in a row.
class RqExprRepeat final : public RqScalarFunction<RqExprRepeat, kRqExprRepeat, RqStringAndCount> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

struct RqCountOperand {
  enum { kCountOperand, kNumOperands };
};
/// So many blanks.
class RqExprSpace final : public RqScalarFunction<RqExprSpace, kRqExprSpace, RqCountOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

struct RqTrimOperands {
  enum { kCharToTrim, kFromString, kNumOperands };
};
/// The text without a character at its start, at its end or at both.
class RqExprTrim final : public RqScalarWithFields<RqExprTrim, kRqExprTrim, RqTrimOperands, 0> {
 public:
  enum TrimOperation : std::uint32_t { kBoth, kLeading, kTrailing };

  RqExprTrim() = default;
  /// A null character is the blank.
  RqExprTrim(RqExpr* pCharToTrim, RqExpr* pFromString, TrimOperation trimOperation)
      : RqScalarWithFields(pCharToTrim, pFromString), m_trimOperation(trimOperation) {
    KX_ASSERT(pFromString);
  }
  RqExprTrim(const RqExprTrim& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy), m_trimOperation(rhs.m_trimOperation) {}

  TrimOperation GetTrimOperation() const { return m_trimOperation; }

 private:
  friend RqScalarWithFields;
  TrimOperation m_trimOperation = kBoth;

  static constexpr std::tuple kComparedFields{&RqExprTrim::m_trimOperation};
  static constexpr std::tuple kOrderedFields = kComparedFields;
  static constexpr std::tuple kWrittenFields{RqEnumField{&RqExprTrim::m_trimOperation, kTrailing}};
};

struct RqNLSSortOperands {
  enum { kFirstOperand, kNLSSortSpec, kNumOperands };
};
/// The bytes by which a text sorts in a language; in the session's when none is given.
class RqExprNLSSort final : public RqScalarFunction<RqExprNLSSort, kRqExprNLSSort, RqNLSSortOperands, 1> {
 public:
  using RqScalarFunction::RqScalarFunction;
};
