#include "Query/Optimizer/Request/Node/SQORSmartRqNodePtr.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "Node/TestNode.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

namespace {

class SmartRqNodePtrTest : public NodeTest {
 protected:
  std::unique_ptr<RqExprColumnList> m_pList = std::make_unique<RqExprColumnList>();
  std::unique_ptr<RqExprColumnList> m_pOther = std::make_unique<RqExprColumnList>();
};

TEST_F(SmartRqNodePtrTest, ReadsNullOnceTheTargetIsGone) {
  SmartRqNodePtr ptr(m_pList.get());
  SmartRqNodePtr copy(ptr);
  SmartRqNodePtr assigned;
  assigned = ptr;
  EXPECT_EQ(m_pList->GetSmartPtrReferencesCount(), 3);
  EXPECT_EQ(SmartRqNodePtr(*m_pList)->GetSmartPtrReferencesCount(), 4);
  copy = m_pOther.get();
  EXPECT_EQ(m_pList->GetSmartPtrReferencesCount(), 2);
  EXPECT_EQ(m_pOther->GetSmartPtrReferencesCount(), 1);
  m_pList.reset();
  EXPECT_EQ(ptr.Get(), nullptr);
  EXPECT_EQ(assigned.Get(), nullptr);
  EXPECT_EQ(copy.Get(), m_pOther.get());
  copy = nullptr;
  m_pOther->AddRqNodePtr(nullptr);
  EXPECT_EQ(m_pOther->GetSmartPtrReferencesCount(), 0);
}

TEST_F(SmartRqNodePtrTest, SurvivesAssignmentToItselfAndComparesByTarget) {
  SmartRqNodePtr ptr(m_pList.get());
  const SmartRqNodePtr& same = ptr;
  const SmartRqNodePtr other(m_pOther.get());
  ptr = same;
  EXPECT_EQ(ptr.Get(), m_pList.get());
  EXPECT_EQ(m_pList->GetSmartPtrReferencesCount(), 1);
  EXPECT_TRUE(ptr == SmartRqNodePtr(m_pList.get()) && !(ptr == other));
  EXPECT_TRUE((ptr < other) != (other < ptr) && SmartRqNodePtr() < ptr);
}

TEST_F(SmartRqNodePtrTest, StaysRegisteredInAVectorThatGrows) {
  std::vector<SmartRqNodePtr> ptrs;
  for (int i = 0; i < 20; ++i) ptrs.emplace_back(m_pList.get());
  EXPECT_EQ(m_pList->GetSmartPtrReferencesCount(), 20);
  m_pList.reset();
  for (const SmartRqNodePtr& ptr : ptrs) EXPECT_EQ(ptr.Get(), nullptr);
}

TEST_F(SmartRqNodePtrTest, FollowsAReplacement) {
  SmartRqNodePtr first(m_pList.get());
  const SmartRqNodePtr second(m_pList.get());
  m_pList->ReplaceSmartPtrReferences(m_pOther.get());
  EXPECT_EQ(first.Get(), m_pOther.get());
  EXPECT_EQ(second.Get(), m_pOther.get());
  EXPECT_EQ(m_pList->GetSmartPtrReferencesCount(), 0);
  m_pOther->ReplaceSmartPtrReferences(nullptr);
  EXPECT_EQ(first.Get(), nullptr);
}

TEST_F(SmartRqNodePtrTest, FollowsAColumnListThatIsReplacedByOne) {
  RqHandleNode tree(m_pList.release());
  RqHandleNode pen;
  const SmartRqNodePtr ptr(static_cast<RqExprColumnList*>(tree.GetRqNode()));
  RqExprColumnList* const pOther = m_pOther.release();
  tree.GetRqNode()->Replace(pOther, pen);
  EXPECT_EQ(ptr.Get(), pOther);

  pOther->Replace(new RqExprColumnListOrdered(), pen);
  EXPECT_EQ(ptr.Get(), pOther) << "a list of another kind is no container";
  RqHandleNode last(pOther);
  pOther->Replace(nullptr, pen);
  EXPECT_EQ(ptr.Get(), pOther);
}

TEST_F(SmartRqNodePtrTest, KeepsItsTargetWhenThatIsCopied) {
  const SmartRqNodePtr ptr(m_pList.get());
  const std::unique_ptr<RqNode> pCopy(m_pList->DeepCopy(false));
  EXPECT_EQ(static_cast<RqExprColumnList&>(*pCopy).GetSmartPtrReferencesCount(), 0);
  EXPECT_EQ(ptr.Get(), m_pList.get());
}

using SmartRqNodePtrDeathTest = SmartRqNodePtrTest;

TEST_F(SmartRqNodePtrDeathTest, EndsOnNull) {
  const SmartRqNodePtr null;
  EXPECT_DEATH(*null, "SmartRqNodePtr");
  EXPECT_DEATH(null->GetSmartPtrReferencesCount(), "SmartRqNodePtr");
}

}  // namespace
