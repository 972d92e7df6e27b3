#include <unistd.h>

#include <iostream>

#include "rq/CommandLine.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  std::cin.tie(nullptr);
  CommandStreams streams{std::cin,
                         std::cout,
                         std::cerr,
                         isatty(STDIN_FILENO) == 1,
                         isatty(STDOUT_FILENO) == 1,
                         isatty(STDERR_FILENO) == 1};
  return RunCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc}, streams);
}
