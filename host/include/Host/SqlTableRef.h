#pragma once

#include <cstdint>

/// How tables are joined. The numbers travel in byte forms.
class SqlTableRef {
 public:
  enum JoinType : std::uint16_t {
    kInnerJoin,
    kLeftOuterJoin,
    kRightOuterJoin,
    kFullOuterJoin,
    /// A full outer join of the results of two blocks, which "stitches" their rows together over shared columns.
    kFullOuterStitchJoin,
    kNaturalJoin
  };

  /// How a join is carried out, where the compiler has chosen.
  enum JoinSubType : std::uint16_t { kUnknownJoinSubType, kEagerJoin, kIndexJoin };

  /// The join type with left and right exchanged: left and right outer join swap, each other type is its own.
  static constexpr JoinType FlipJoinType(JoinType type) {
    if (type == kLeftOuterJoin) return kRightOuterJoin;
    return type == kRightOuterJoin ? kLeftOuterJoin : type;
  }
};
