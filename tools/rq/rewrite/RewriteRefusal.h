#pragma once

#include <stdexcept>
#include <string>

#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

/// Why a rewriting cannot be done, with the name of what stands in its way. The answer to a query is then no.
class RewriteRefusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A part of a request, for a reason. The gateway gives the names of its objects.
inline std::string TextOf(const RqNode& node, ARpGateway* pRp) {
  return RqDumpout::StringFrom(node, false, false, pRp).ToUTF8();
}
