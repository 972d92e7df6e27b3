#include "rq/Command.h"
#include "rq/CommandBytes.h"
#include "rq/CommandExplain.h"
#include "rq/CommandFeatures.h"
#include "rq/CommandImplies.h"
#include "rq/CommandNormalize.h"
#include "rq/CommandRewrite.h"
#include "rq/CommandRun.h"
#include "rq/CommandSql.h"

std::vector<std::unique_ptr<Command>> MakeCommands() {
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(std::make_unique<CommandRun>());
  commands.push_back(std::make_unique<CommandSql>());
  commands.push_back(std::make_unique<CommandExplain>());
  commands.push_back(std::make_unique<CommandSplit>());
  commands.push_back(std::make_unique<CommandAnswer>());
  commands.push_back(std::make_unique<CommandNormalize>());
  commands.push_back(std::make_unique<CommandImplies>());
  commands.push_back(std::make_unique<CommandBytes>());
  commands.push_back(std::make_unique<CommandFeatures>());
  return commands;
}
