// Reading of ".MAL": one block of 25 entries for each polymer kind.
// Called by the input stage.
#include "input/polymer_file.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

#include "input/input_echo.h"
#include "input/polymer.h"
#include "input/process_record.h"
#include "run/base/failure.h"
#include "run/base/messages.h"
#include "run/base/reading.h"
#include "run/base/streams.h"
#include "run/base/working_files.h"

namespace keld {

FixedColumn<PolymerRecord, 2> polymerRecord;
FillerValues fillerValues;
int polymerMode = 1;

namespace {

enum class Order { rising, falling };

/// Reads the entries of one block in turn. Where an entry is only echoed, text in place of a number leaves
/// the former value, as the integer read before it or the number that the list holds; where the analysis uses
/// it, the run ends. The end of the file ends the run in any case.
class BlockReader {
 public:
  explicit BlockReader(TextReader& file) : file_(file) {}

  void labelledInteger() {
    label();
    integer(ValueUse::echoed);
    echoInteger();
    vPrintMessage(-2, "\n");
    file_.skipLine();
  }

  void copiedLines(int count) {
    vPrintMessage(-2, "<b>\n");
    for (int i = 0; i < count; ++i) {
      vEchoThrough(file_, 1);
      vEchoThrough(file_, -1);
    }
    vPrintMessage(-2, "</b>\n");
  }

  /// A labelled count and its numbers; the echo is left to the caller.
  void counted(CountedList& list, ValueUse use) {
    label();
    countAndNumbers(list, use, use);
  }

  /// Property 11: the analysis asks for its count, which has four columns at most.
  void property11(CountedList& list) {
    label();
    countAndNumbers(list, ValueUse::used, ValueUse::echoed, 4);
    echoList(list);
  }

  void countAndNumbers(CountedList& list, ValueUse useOfCount, ValueUse useOfNumbers, int countWidth = 0) {
    integer(useOfCount, countWidth);
    requireCount(list.capacity);
    list.count = integer_;
    for (int i = 1; i <= list.count; ++i) list.value[i] = number(list.value[i], useOfNumbers);
    file_.skipLine();
  }

  void echoedCounted(CountedList& list, ValueUse use) {
    counted(list, use);
    echoList(list);
  }

  /// A counted list of one pair or of one number, which then stands twice, put in order.
  void pair(CountedList& list, Order order) {
    counted(list, ValueUse::used);
    if (list.count < 1) file_.refuse("the list before this line needs at least one number");
    if (list.count == 1) {
      list.count = 2;
      list.value[2] = list.value[1];
    }
    const bool wrong = order == Order::rising ? list.value[1] > list.value[2] : list.value[1] < list.value[2];
    if (list.count == 2 && wrong) std::swap(list.value[1], list.value[2]);
    echoList(list);
  }

  /// An integer, and one number when it is above 0. `echoFirst` prints the integer of the entry before it.
  void optionalNumber(bool echoFirst = false) {
    label();
    if (echoFirst) echoInteger();
    integer(ValueUse::echoed);
    if (!echoFirst) echoInteger();
    if (integer_ > 0) vPrintMessage(-2, "  %5.2lf", dropped_ = number(dropped_, ValueUse::echoed));
    file_.skipLine();
  }

  void optionalNumbers() {
    label();
    integer(ValueUse::echoed);
    requireCount(static_cast<int>(std::min<std::size_t>(file_.remaining() / 2 + 1, 1u << 30)));
    echoInteger();
    for (int i = 0; i < integer_; ++i)
      vPrintMessage(-2, "  %5.2lf", dropped_ = number(dropped_, ValueUse::echoed));
    file_.skipLine();
  }

  void fillers() {
    fillerValues = FillerValues{-1.0, -1.0, -1.0, -1.0, -1.0};
    double first = 0.0;
    double* const fields[] = {&first,
                              &fillerValues.fillerValue2,
                              &fillerValues.fillerExpansion,
                              &fillerValues.fillerModulus,
                              &fillerValues.fillerPoisson,
                              &fillerValues.fillerDensity};
    label();
    integer(ValueUse::used);
    requireCount(std::numeric_limits<int>::max());  // entries beyond the sixth stay in the file
    echoInteger();
    for (int i = 0; i < integer_ && i < static_cast<int>(std::size(fields)); ++i) {
      *fields[i] = number(0.0, ValueUse::used);
      vPrintMessage(-2, "  %lf", *fields[i]);
    }
    file_.skipLine();
  }

  /// The shear modulus; without a number, and behind the echo, it becomes that of an isotropic polymer.
  void shear(PolymerRecord& record) {
    CountedList& list = record.shearModulus;
    label();
    integer(ValueUse::used);
    const bool given = integer_ >= 1;
    if (given) requireCount(list.capacity);
    list.count = given ? integer_ : 0;
    for (int i = 1; i <= list.count; ++i) list.value[i] = number(0.0, ValueUse::used);
    file_.skipLine();
    echoInteger();
    echoNumbers(list);
    if (given) return;
    list.count = 1;
    list.value[1] = record.modulus(1) / ((record.poisson(1) + 1.0) * 2.0);
  }

  static void echoList(const CountedList& list) {
    vPrintMessage(-2, "  %d", list.count);
    echoNumbers(list);
  }

  static void echoNumbers(const CountedList& list) {
    for (int i = 1; i <= list.count; ++i) vPrintMessage(-2, "  %5.2le", list(i));
    vPrintMessage(-2, "\n");
  }

 private:
  void label() { vEchoThrough(file_, 1); }
  void echoInteger() const { vPrintMessage(-2, "  %d", integer_); }

  void integer(ValueUse use, int width = 0) {
    if (const auto value = file_.readInt(width))
      integer_ = *value;
    else if (use == ValueUse::used || file_.atEnd())
      file_.fault("an integer behind the \"=\" of an entry");
  }

  double number(double former, ValueUse use) {
    if (use == ValueUse::used) return file_.needLeadingDouble("a finite number of a counted list");
    const auto value = file_.readDouble();
    if (!value && file_.atEnd()) file_.fault("a number of a counted list");
    return value.value_or(former);
  }

  void requireCount(int most) const {
    if (integer_ < 0 || integer_ > most)
      file_.refuse("a count is " + std::to_string(integer_) + ", expected 0 to " + std::to_string(most));
  }

  TextReader& file_;
  int integer_ = 0;       // the integer read last, of whatever entry
  double dropped_ = 0.0;  // the number read last into no field
};

/// Entries 1 to 14.
void readFirstEntries(TextReader& file, BlockReader& block, PolymerRecord& record) {
  block.labelledInteger();
  block.labelledInteger();
  block.copiedLines(2);
  for (int i = 0; i < 3; ++i) file.skipLine();
  block.echoedCounted(record.temperatures, ValueUse::echoed);
  for (int i = 1; i <= record.temperatures.count; ++i) record.temperatures.value[i] += kelvinOfZeroCelsius;
  block.echoedCounted(record.property2, ValueUse::echoed);
  block.echoedCounted(record.property3, ValueUse::echoed);
  block.echoedCounted(record.property4, ValueUse::echoed);
  block.echoedCounted(record.pvt, ValueUse::used);
  block.counted(record.property6, ValueUse::echoed);
  block.countAndNumbers(record.property7, ValueUse::echoed, ValueUse::echoed);
  BlockReader::echoList(record.property6);
  vPrintMessage(-3, "                                 %d", record.property7.count);
  BlockReader::echoNumbers(record.property7);
  block.pair(record.thermalExpansion, Order::rising);
  block.pair(record.modulus, Order::falling);
  block.pair(record.poisson, Order::rising);
}

/// Entries 16 to 25.
void readLastEntries(BlockReader& block, PolymerRecord& record) {
  block.optionalNumber();
  block.optionalNumber();
  block.fillers();
  block.optionalNumber();
  block.optionalNumber(true);
  block.optionalNumbers();
  for (int i = 0; i < 3; ++i) {
    CountedList dropped{10};
    block.echoedCounted(dropped, ValueUse::echoed);
  }
  block.shear(record);
}

/// Returns whether the entries go on to further kinds.
bool readKind(TextReader& file, const char* tag, PolymerRecord& record) {
  file.moveTo(0);
  file.needLineStartingWith(tag);
  vPrintMessage(-2, "\n%s\n", tag);
  BlockReader block(file);
  readFirstEntries(file, block, record);
  block.property11(record.property11);
  polymerMode = record.property11.count > 0 ? 3 : 1;
  if (polymerMode == 3) return false;
  readLastEntries(block, record);
  vPrintMessage(-2, "<br>\n");
  return true;
}

/// The second kind takes everything of the first but property11.
void copyFirstKind() {
  const CountedList own = polymerRecord[2].property11;
  polymerRecord[2] = polymerRecord[1];
  polymerRecord[2].property11 = own;
}

}  // namespace

void readPolymerKinds(TextReader& file) {
  polymerRecord = {};
  fillerValues = {};
  file.moveTo(0);
  vEchoThrough(file, -1);
  const bool twoKinds = processRecord.secondKind == 1;
  if (readKind(file, "[First_Kind]", polymerRecord[1]) && twoKinds)
    readKind(file, "[Second_Kind]", polymerRecord[2]);
  if (!twoKinds) copyFirstKind();
}

void readPolymerFile() {
  vPrintMessage(2, "<br>\n");
  echoHeading("\n # Material data information ......                \n");
  vPrintMessage(2, "<br>\n");
  vPrintMessage(2, "<br>\n");
  if (!waitForFile(workingFiles.mal)) vFail(message::D1009);
  TextReader file = TextReader::open(workingFiles.mal);
  const ReportSection section;
  readPolymerKinds(file);
}

}  // namespace keld
