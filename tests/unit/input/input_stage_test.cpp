// The input stage on a whole job, its files missing, late or in their second place; what all readers share:
// seeds of the fuzz targets, files cut at every byte.
#include "input/input_stage.h"

#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "input/geometry_file.h"
#include "input/mesh_tables.h"
#include "model/prior_stage.h"
#include "places.h"
#include "run/base/labels.h"
#include "support/input_test.h"

namespace keld {
namespace {

using testing::HasSubstr;
using testing_support::InputTest;
using testing_support::replaced;
using testing_support::ScratchJob;
using testing_support::seedOf;

class InputStage : public testing::Test {
 protected:
  void SetUp() override {
    testing_support::startRun(job_);
    retryPause = std::chrono::milliseconds(0);
    forgetLabelTables();
  }

  std::string standard(const char* name) const { return job_.install() + "Standard/" + name; }

  ScratchJob job_ = ScratchJob::copyOf(places::cases / "plate-stress");
};

struct MissingCase {
  std::vector<const char*> suffixes, standard;
  const char* words;
};

class Missing : public InputStage, public testing::WithParamInterface<MissingCase> {};

TEST_P(Missing, EndsTheRunWithItsMessage) {
  for (const char* suffix : GetParam().suffixes) job_.remove(suffix);
  for (const char* name : GetParam().standard) std::filesystem::remove(standard(name));
  EXPECT_THAT(testing_support::faultOf([] { inputStage(); }), HasSubstr(GetParam().words));
}

INSTANTIATE_TEST_SUITE_P(
    Files, Missing,
    testing::Values(
        MissingCase{
            {".PRC"}, {}, "\n !! Error D1005 !!  KELD process condition file 'filename.PRC' not found \n"},
        MissingCase{
            {".MAL"}, {}, "\n !! Error D1009 !!  Polymer properties file 'filename.MAL' not found \n"},
        MissingCase{
            {".PG1"}, {}, "\n !! Error D1020 !!  Part geometry file 'filename.PG1/PG2/PG3 not found \n"},
        MissingCase{{".RS1", ".PT1"},
                    {},
                    "\n !! Error D1025 !!  Both of results file 'filename.RS1/RS2'(from FLOW-PACK) and \n"
                    "                    'filename.CT1/CT2/CT3'(from COOL) or'filename.PT1/PT2/PT3'(from "
                    "FLOW-PACK) not found.\n"},
        MissingCase{{".CPU"}, {"File.CPU"}, "Cannot open the solver settings"},
        MissingCase{{}, {"String.STD"}, "Cannot open the string table"},
        MissingCase{{}, {"Unit.STD"}, "Cannot open the unit table"}));

struct OddFileCase {
  const char* suffix;
  void (*make)(const char* path);
  const char* words;
};

class OddFile : public InputStage, public testing::WithParamInterface<OddFileCase> {};

TEST_P(OddFile, EndsTheRunAtOnce) {
  const std::string path = job_.path(GetParam().suffix);
  std::filesystem::remove(path);
  GetParam().make(path.c_str());
  EXPECT_THAT(testing_support::faultOf([] {
                inputStage();
                readPriorResults();
              }),
              HasSubstr(path + GetParam().words));
}

void makePipe(const char* path) { ASSERT_EQ(::mkfifo(path, 0600), 0); }
void makeDevice(const char* path) { std::filesystem::create_symlink("/dev/zero", path); }
void makeFolder(const char* path) { std::filesystem::create_directory(path); }

INSTANTIATE_TEST_SUITE_P(Kinds, OddFile,
                         testing::Values(OddFileCase{".PG1", makePipe, " is a pipe"},
                                         OddFileCase{".PRC", makePipe, " is a pipe"},
                                         OddFileCase{".BC1", makePipe, " is a pipe"},
                                         OddFileCase{".RS1", makePipe, " is a pipe"},
                                         OddFileCase{".MAL", makeDevice, " is a device"},
                                         OddFileCase{".CPU", makeFolder, " is a folder"}));

TEST_F(InputStage, TakesTheSettingsOfTheInstallationAndNoFixedNodes) {
  for (const char* suffix : {".CPU", ".BC1", ".PT1"}) job_.remove(suffix);
  std::string settings = testing_support::readText(standard("File.CPU"));
  for (const char* string : {"22005", "22006", "22007"})
    settings = replaced(settings, string + std::string("  flag= 1  value= 0"),
                        string + std::string("  flag= 1  value= 36"));
  std::ofstream(standard("File.CPU")) << settings;

  EXPECT_THAT(testing_support::faultOf([] { inputStage(); }),
              HasSubstr(standard("File.CPU") + ": boundary node 1 is 36"));
  EXPECT_EQ(geometry.axisMajor, 1);
}

TEST_F(InputStage, WaitsForLateFiles) {
  retryPause = std::chrono::milliseconds(20);
  std::vector<std::string> paths;
  for (const char* suffix : {".PG1", ".PRC", ".MAL", ".CPU"}) paths.push_back(job_.path(suffix));
  for (const std::string& path : paths) std::filesystem::rename(path, path + ".late");
  std::thread writer([&paths] {
    for (const std::string& path : paths) {
      std::this_thread::sleep_for(std::chrono::milliseconds(30));
      std::filesystem::rename(path + ".late", path);
    }
  });
  EXPECT_NO_THROW(inputStage());
  writer.join();
}

struct NodeCase {
  const char *nodes, *words;
};

class BoundaryNodes : public InputStage, public testing::WithParamInterface<NodeCase> {};

TEST_P(BoundaryNodes, MustBeNodesOfTheFile) {
  job_.write(".BC1", std::string("[Keld_FixBC]\n") + GetParam().nodes);
  if (GetParam().words)
    EXPECT_THAT(testing_support::faultOf([] { inputStage(); }),
                HasSubstr(job_.path(".BC1") + GetParam().words));
  else
    EXPECT_NO_THROW(inputStage());
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, BoundaryNodes,
    testing::Values(NodeCase{"1\n36\n9\n", ": boundary node 2 is 36, expected a node number from 1 to 35"},
                    NodeCase{"1\n5\n-9\n", ": boundary node 3 is -9"}, NodeCase{"0\n36\n-9\n", nullptr}));

TEST_F(InputTest, EverySeedIsReadOrRefusedWithAMessage) {
  namespace fs = std::filesystem;
  for (const fuzz::Reader& reader : fuzz::readers)
    for (const auto& seed : fs::directory_iterator(places::seeds / reader.name)) {
      SCOPED_TRACE(seed.path());
      try {
        reader.read(testing_support::readText(seed.path()));
      } catch (const RunEnded&) {
        EXPECT_NE(seed.path().filename(), "valid");
      }
    }
}

/// From where to where a cut has to end the run: behind `begin` (the start where empty) up to before the last
/// `end`, whose last character may be missed only where nothing is lost.
struct CutCase {
  const char *reader, *begin, *end;
};

class Cut : public InputTest, public testing::WithParamInterface<CutCase> {};

TEST_P(Cut, EndsTheRunUpToTheLastValueThatIsUsed) {
  const std::string text = seedOf(GetParam().reader);
  const std::size_t begin =
      *GetParam().begin ? text.find(GetParam().begin) + std::string(GetParam().begin).size() : 0;
  const std::size_t end = text.rfind(GetParam().end);
  ASSERT_NE(end, std::string::npos);
  for (std::size_t cut = 0; cut <= text.size(); ++cut) {
    bool ended = false;
    try {
      fuzz::readerNamed(GetParam().reader).read(text.substr(0, cut));
    } catch (const RunEnded&) {
      ended = true;
    }
    if (cut >= begin && cut <= end) {
      EXPECT_TRUE(ended) << "cut at byte " << cut;
    }
    if (cut < begin || cut > end + std::string(GetParam().end).size()) {
      EXPECT_FALSE(ended) << "cut at byte " << cut;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Files, Cut,
                         testing::Values(CutCase{"process", "", "25\n"}, CutCase{"settings", "", "3000"},
                                         CutCase{"boundary", "[Keld_FixBC]", "9"},
                                         CutCase{"polymer", "", "0  end\n"}, CutCase{"geometry", "", "0\n"},
                                         CutCase{"units", "", "]"}));

}  // namespace
}  // namespace keld
