#pragma once

#include <cstdint>
#include <string_view>

#include "Host/KXDataType.h"
#include "rq/sql/SqlTree.h"

/// What a cast casts to, as RqExprCast holds it.
struct CastType {
  KXDataType m_type;
  std::int32_t m_precision;
  std::int32_t m_scale;
};

/// Reads the parser's TypeName. The text is the one that was parsed: the parser has one name for NUMERIC and DECIMAL,
/// and keeps no precision of a FLOAT. Where no length is given it is 0, where no precision or scale of a number or a
/// moment is given it is -1. Raises SqlError at a type that values are not cast to, and at a length that cannot be.
CastType ReadCastType(SqlNode typeName, std::string_view text);
