#pragma once

#include "Host/KXString.h"

/// How narrow text encodes characters.
enum MultiByteCodePage {
  kCodePageLatin1 = 28591,  // a byte is a character
  kCodePageUtf8 = 65001     // as KXString::FromUTF8 and ToUTF8 read and write it
};

/// What the operating system says.
class SystemUtility {
 public:
  /// Processors this process may run on, at least 1. Asked once.
  static int GetNumberOfProcessors();

  /// Time since 1970-01-01 00:00 UTC.
  static void GetTimeOfDay(unsigned& seconds, int& microseconds);

  /// Reads the process environment anew at each call. Gives false and leaves `value` as it was if the variable is not
  /// set. The environment must not be changed by another thread meanwhile.
  static bool Getenv(const KXString& name, KXString& value);
  /// The same for a name in the encoding of the environment, for those who ask often.
  static bool Getenv(const char* name, KXString& value);

  /// A pseudo-random number from 0 to RAND_MAX, from a sequence of the running thread's own.
  static int KXRand_to_rand_r();

  /// The code page of narrow text in rows, in the environment and on the standard streams: UTF-8.
  static MultiByteCodePage GetMultiByteCodePage() { return kCodePageUtf8; }
};
