#pragma once

#include <string>

#include "rq/TreeDescription.h"

/// A tree as nested objects of JSON, to read and to compare: {"kind": "RqExprCondNot", "operand": {...}}. Objects hold
/// what DescribeNode says, in its order, behind the kind and, if the options say so, the identity of the node, "id".
/// Fields stand on the line of their node, and each tree below it on lines of its own, as far as that stays readable:
/// what lies very deep is not broken into lines. The text ends with a line feed and is the same for the same tree.
///
/// Cost: linear in the text; any depth of tree will do, as nothing here recurses. pRp gives names, and may be null.
std::string WriteTreeJson(RqNode& root, ARpGateway* pRp, const TreeOptions& options);
