#pragma once

#include <string>
#include <utility>

#include "rq/sql/SqlWriter.h"

// Scopes of the writer: what holds while one stands.

/// What is being written, for messages.
class SqlWriter::PlaceScope {
 public:
  PlaceScope(SqlWriter& writer, std::string place)
      : m_writer(writer), m_before(std::exchange(writer.m_place, std::move(place))) {}
  PlaceScope(const PlaceScope&) = delete;
  PlaceScope& operator=(const PlaceScope&) = delete;
  ~PlaceScope() { m_writer.m_place = std::move(m_before); }

 private:
  SqlWriter& m_writer;
  std::string m_before;
};

/// Another value in a variable of the writer.
template <class Value>
class ValueScope {
 public:
  ValueScope(Value& variable, Value value)
      : m_variable(variable), m_before(std::exchange(variable, std::move(value))) {}
  ValueScope(const ValueScope&) = delete;
  ValueScope& operator=(const ValueScope&) = delete;
  ~ValueScope() { m_variable = std::move(m_before); }

 private:
  Value& m_variable;
  Value m_before;
};
