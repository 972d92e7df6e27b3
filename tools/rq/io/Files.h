#pragma once

#include <string>

#include "Host/HostTypes.h"

// Whole files. Both raise std::system_error, with the name in the message.

ByteVector ReadBytes(const std::string& name);
void WriteBytes(const std::string& name, const ByteVector& bytes);

/// A file, or for "-" the standard input, as text. Raises std::system_error.
std::string ReadText(const std::string& name, std::istream& standardInput);
