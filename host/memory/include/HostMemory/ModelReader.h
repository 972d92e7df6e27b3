#pragma once

#include <string>
#include <string_view>

#include "HostMemory/MemoryGateway.h"

/// Reads a model, the JSON text that describes a repository and a session, into a gateway. docs/model.md tells the
/// format. What the model refers to may be in the gateway already.
///
/// A model is read whole or not at all: an error leaves the gateway as it was. It raises ErrorMessage kMsgModel, whose
/// arguments are the place and the cause. The place is the source and, where the text is no JSON, line and column, else
/// the path of keys to the value: "shop.json: databases[1].features.UNION". A text that is JSON is read to its end: the
/// message has a line for each fault, up to a limit.
///
/// The objects of each interface get the lowest numbers that the gateway has not given, in the order of the text.
class ModelReader {
 public:
  /// `source` names the text in messages.
  static void ReadText(std::string_view text, const KXString& source, MemoryGateway& gateway);
  /// Raises std::system_error if the file cannot be read.
  static void ReadFile(const std::string& path, MemoryGateway& gateway);

  /// Reads the model that is built in: the retail star of examples/retail.json.
  static void ReadDefault(MemoryGateway& gateway);
  static std::string_view GetDefaultText();
};
