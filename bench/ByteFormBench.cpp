// The byte form written and read, beside protobuf with the same tree converted to and from messages on an arena, and
// beside a copy of the same bytes.

#include <benchmark/benchmark.h>
#include <google/protobuf/arena.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "Corpus.h"
#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"
#include "Ratio.h"
#include "RequestTree.pb.h"

namespace {

constexpr int kComparisons = 50;

RqExprCond& Tree() {
  static const OwnedRqExprCondPtr tree(MakeBalancedCondition(kComparisons));
  return *tree;
}

std::int64_t CountNodes(const RqNode& node) {
  std::int64_t count = 1;
  for (int i = 0; i < node.GetNumChildren(); ++i) count += CountNodes(*node.GetIthChild(i));
  return count;
}

void SetNodes(benchmark::State& state) {
  static const std::int64_t nodes = CountNodes(Tree());
  state.SetItemsProcessed(state.iterations() * nodes);
}

ByteVector BytesOfTree() {
  ByteVector bytes;
  RqTreeVector::ToByteVector(&Tree(), bytes);
  return bytes;
}

// ---------------------------------------------------------------------------------------------------------------------
// Messages

void SetColumn(const RqTargetColumn& column, RequestColumn& message) {
  message.set_name(column.GetColumnName(nullptr).ToUTF8());
  message.set_table(column.GetSourceTableNumber());
  message.set_column_interface(column.GetColumnID().GetInterfaceTypeID());
  message.set_column_number(column.GetColumnID().GetUniqueNum().m_number);
}

void ToMessage(const RqNode& node, RequestNode& message) {
  message.set_kind(node.GetObjectType());
  message.set_target_type(node.GetTargetType());
  VoidID target;
  node.GetTargetID(target);
  message.set_target_interface(target.GetInterfaceTypeID());
  message.set_target_number(target.GetUniqueNum().m_number);
  switch (node.GetObjectType()) {
    case kRqTargetColumn:
      SetColumn(static_cast<const RqTargetColumn&>(node), *message.mutable_column());
      break;
    case kRqExprIntegerLiteral:
      message.set_number(static_cast<const RqExprIntegerLiteral&>(node).GetValue());
      break;
    case kRqExprCondEquality:
      message.set_flag(static_cast<const RqExprCondEquality&>(node).AreNullsEqual());
      break;
    default:
      break;
  }
  for (int i = 0; i < node.GetNumChildren(); ++i) ToMessage(*node.GetIthChild(i), *message.add_children());
}

RqExpr* FromMessage(const RequestNode& message) {
  const auto operand = [&message](int i) { return FromMessage(message.children(i)); };
  const auto condition = [&](int i) { return static_cast<RqExprCond*>(operand(i)); };
  RqExpr* pExpr = nullptr;
  switch (message.kind()) {
    case kRqTargetColumn:
      pExpr = new RqTargetColumn(KXString::FromUTF8(message.column().name()), message.column().table());
      break;
    case kRqExprIntegerLiteral:
      pExpr = new RqExprIntegerLiteral(message.number(), false);
      break;
    case kRqExprCondEquality:
      pExpr = new RqExprCondEquality(operand(0), operand(1), message.flag());
      break;
    case kRqExprCondAnd:
      pExpr = new RqExprCondAnd();
      break;
    default:
      pExpr = new RqExprCondOr();
      break;
  }
  if (pExpr->GetNumOperands() < message.children_size()) {
    pExpr->SetNumOperands(message.children_size());
    for (int i = 0; i < message.children_size(); ++i) pExpr->SetIthOperand(i, condition(i));
  }
  pExpr->MarkTargetType(static_cast<ServerInfo::TargetType>(message.target_type()));
  pExpr->MarkTargetID(VoidID(message.target_interface(), message.target_number()));
  return pExpr;
}

/// An arena whose first block holds all messages of the tree, so that protobuf allocates nothing else for them.
class MessageArena {
 public:
  MessageArena() : m_block(new char[kBlockSize]) {
    google::protobuf::ArenaOptions options;
    options.initial_block = m_block.get();
    options.initial_block_size = kBlockSize;
    m_arena.emplace(options);
  }

  RequestNode& MakeMessage() { return *google::protobuf::Arena::CreateMessage<RequestNode>(&*m_arena); }
  /// Frees the messages and keeps the block.
  void Reset() { m_arena->Reset(); }

 private:
  static constexpr std::size_t kBlockSize = 256 * 1024;
  std::unique_ptr<char[]> m_block;
  std::optional<google::protobuf::Arena> m_arena;
};

std::string MessageBytesOfTree() {
  MessageArena arena;
  RequestNode& message = arena.MakeMessage();
  ToMessage(Tree(), message);
  return message.SerializeAsString();
}

// ---------------------------------------------------------------------------------------------------------------------
// Benchmarks

void BM_Write(benchmark::State& state) {
  ByteVector bytes;
  for (auto _ : state) {
    bytes.clear();
    RqTreeVector::ToByteVector(&Tree(), bytes);
    benchmark::DoNotOptimize(bytes.data());
  }
  SetNodes(state);
  state.counters["bytes_a_node"] = static_cast<double>(bytes.size()) / static_cast<double>(CountNodes(Tree()));
}

void BM_Read(benchmark::State& state) {
  const ByteVector bytes = BytesOfTree();
  for (auto _ : state) {
    RqNode* pNode = nullptr;
    RqTreeVector::FromByteVector(bytes.data(), &pNode);
    const Heap<RqNode> tree(pNode);
    benchmark::DoNotOptimize(pNode);
  }
  SetNodes(state);
}

void BM_ReadBounded(benchmark::State& state) {
  const ByteVector bytes = BytesOfTree();
  for (auto _ : state) {
    const BoundedRead bounds(bytes);
    RqNode* pNode = nullptr;
    bounds.RequireAtEnd(RqTreeVector::FromByteVector(bytes.data(), &pNode));
    const Heap<RqNode> tree(pNode);
    benchmark::DoNotOptimize(pNode);
  }
  SetNodes(state);
}

void BM_ProtobufWrite(benchmark::State& state) {
  MessageArena arena;
  std::string bytes;
  for (auto _ : state) {
    RequestNode& message = arena.MakeMessage();
    ToMessage(Tree(), message);
    message.SerializeToString(&bytes);
    benchmark::DoNotOptimize(bytes.data());
    arena.Reset();
  }
  SetNodes(state);
  state.counters["bytes_a_node"] = static_cast<double>(bytes.size()) / static_cast<double>(CountNodes(Tree()));
}

void BM_ProtobufRead(benchmark::State& state) {
  const std::string bytes = MessageBytesOfTree();
  MessageArena arena;
  for (auto _ : state) {
    RequestNode& message = arena.MakeMessage();
    message.ParseFromString(bytes);
    const Heap<RqNode> tree(FromMessage(message));
    benchmark::DoNotOptimize(tree.Get());
    arena.Reset();
  }
  SetNodes(state);
}

void BM_Memcpy(benchmark::State& state) {
  const ByteVector bytes = BytesOfTree();
  ByteVector copy(bytes.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), bytes.data(), bytes.size());
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  SetNodes(state);
}

BENCHMARK(BM_Write)->Name("bytes_write");
BENCHMARK(BM_Read)->Name("bytes_read");
BENCHMARK(BM_ReadBounded)->Name("bytes_read_bounded");
BENCHMARK(BM_ProtobufWrite)->Name("protobuf_write");
BENCHMARK(BM_ProtobufRead)->Name("protobuf_read");
BENCHMARK(BM_Memcpy)->Name("bytes_memcpy");

[[maybe_unused]] const bool g_ratios = [] {
  AddRatio({"byte form written, 199 nodes, a node, to protobuf", "bytes_write", {{1, "protobuf_write"}}, 1.0 / 3});
  AddRatio({"byte form read and destroyed, to protobuf", "bytes_read", {{1, "protobuf_read"}}, 0.5});
  AddRatio({"the same under a bound", "bytes_read_bounded", {{1, "protobuf_read"}}});
  AddRatio({"byte form written, to memcpy of its bytes", "bytes_write", {{1, "bytes_memcpy"}}});
  AddRatio({"bytes a node, to protobuf's", "bytes_write:bytes_a_node", {{1, "protobuf_write:bytes_a_node"}}});
  return true;
}();

}  // namespace
