// The pairing table and the program that writes it.
#include "model/skin/pairing_table.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "input/mesh_tables.h"
#include "model/skin/scratch_file.h"
#include "model/skin/shell_tables.h"
#include "run/base/working_files.h"
#include "support/faults.h"
#include "support/skin_scenes.h"

namespace keld {
namespace {

namespace fs = std::filesystem;

struct Pairing {
  const char* name;
  const char* text;
  bool taken;
};

class PairingTable : public testing::TestWithParam<Pairing> {};

TEST_P(PairingTable, IsTakenWholeOrNotAtAll) {
  makePair();
  shell.elementPartner = {0, 0};

  EXPECT_EQ(readPairingTable(TextReader::fromText(GetParam().text, "table")), GetParam().taken);

  EXPECT_EQ(shell.elementPartner[1], GetParam().taken ? 2 : 0);
  EXPECT_GE(shell.elementPartner[2], 0);
  EXPECT_EQ(elementTable.thickness[2], GetParam().taken ? 0.32 : 0.2);
}

INSTANTIATE_TEST_SUITE_P(Texts, PairingTable,
                         testing::Values(Pairing{"Whole", "1 2 0.31\n2 1 0.32\n", true},
                                         Pairing{"PartnerBelowOne", "1 2 0.31\n2 -1 0.32\n", true},
                                         Pairing{"NumbersUnread", "7 2 0.31\n9 1 0.32", true},
                                         Pairing{"OneRowShort", "1 2 0.31\n", false},
                                         Pairing{"OneRowMore", "1 2 0.31\n2 1 0.32\n3 1 0.3\n", false},
                                         Pairing{"Cut", "1 2 0.31\n2 1", false},
                                         Pairing{"NotFinite", "1 2 nan\n2 1 0.32\n", false},
                                         Pairing{"Binary", "Q\x01\x02U", false}),
                         [](const auto& p) { return p.param.name; });

using PairingProgram = SkinFolderTest;

void writeTool(const fs::path& folder, const std::string& script) {
  const fs::path tool = folder / "Software/Favioda/Movrex/Movrex.exe";
  fs::create_directories(tool.parent_path());
  std::ofstream(tool) << script;
  fs::permissions(tool, fs::perms::owner_all);
}

TEST_F(PairingProgram, TheProgramIsStartedWithItsWordsAndItsTableIsRead) {
  makePair();
  writeTool(folder_,
            "#!/bin/sh\n[ $# = 4 ] && [ \"$2$4\" = 1@2@ ] && [ -d \"$3\" ] || exit 1\n"
            "printf '1 2 0.31\\n2 1 0.32\\n' > \"$1\"\n");
  obtainPairingTable();
  EXPECT_EQ(elementTable.thickness[2], 0.32);
}

TEST_F(PairingProgram, AMissingProgramOrAWrongTableLeavesTheMeshAloneWithAWarning) {
  const auto warned = [] {
    testing::internal::CaptureStdout();
    obtainPairingTable();
    return testing::internal::GetCapturedStdout().find("!! Warning !!") != std::string::npos;
  };
  makePair();
  fs::create_directory(workingFiles.baseName);
  EXPECT_FALSE(readScratchFile());
  EXPECT_TRUE(warned());
  fs::remove(workingFiles.baseName);
  EXPECT_EQ(elementTable.thickness[2], 0.2);
  writeTool(folder_, "#!/bin/sh\nprintf '1 2 0.31\\n' > \"$1\"\n");
  EXPECT_TRUE(warned());
  EXPECT_EQ(elementTable.thickness[2], 0.2);
  writeTool(folder_, "#!/bin/sh\nprintf '1 2 0.31\\n2 0 0.3\\n' > \"$1\"\n");
  EXPECT_FALSE(warned());
}

TEST_F(PairingProgram, APartnerAboveTheElementCountEndsTheRun) {
  makePair();
  EXPECT_NE(testing_support::faultOf([] {
              readPairingTable(TextReader::fromText("1 3 0.31\n2 1 0.32\n", "table"));
            }).find("table, row 1: the partner is element 3, and the part has 2"),
            std::string::npos);
}

}  // namespace
}  // namespace keld
