#pragma once

#include <stdexcept>

/// Why a rewriting cannot be done, with the name of what stands in its way. The answer to a query is then no.
class RewriteRefusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};
