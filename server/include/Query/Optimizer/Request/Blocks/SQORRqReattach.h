#pragma once

#include <vector>

class RqAbstractList;
class RqDerivedColumnReference;
class RqList;
class RqNode;

// The repair of a request that was read from its byte form, where references to derived columns know names and numbers
// alone and joins lack an end.

/// Aims the references of the block, and of the blocks below it, at the columns of the derived tables that they name,
/// and completes the joins. Wanted: select list, filters and joins are repaired; grouping, group filter and sort are
/// not, and a caller that keeps those runs ReattachDerivedColumn on them. Raises ErrorMessage when the stack runs low.
/// Cost: each block walks all that stands below it.
void ReattachRqList(RqList* pList);

/// Replaces each reference in a tree that names the derived table of pList, and has not been aimed yet, by one to the
/// column of that number. A reference to a column that pList does not have stays as it is, and so does pNode itself
/// where it is a reference that has no parent. pNode may be null; pList must stand in a derived table.
void ReattachDerivedColumn(RqNode* pNode, RqAbstractList* pList);

/// Repairs a whole request in which each derived table has a number of its own: every reference is aimed, wherever it
/// stands, and every join completed. A reference that names no derived table of the request, or no column of it, stays
/// as it is, and so does one that is the request itself. Cost: the logarithm of all columns for each of them and for
/// each reference.
void ReattachRequest(RqNode& root);

/// Stores all references to derived columns of a request: those among its nodes, in the granularity of groupings and in
/// the conditions of joins.
void FindAllReferences(RqNode& root, std::vector<RqDerivedColumnReference*>& references);
