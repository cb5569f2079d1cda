#include "expected.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include "support/job.h"

namespace keld::testing_support {

namespace {

template <class... Values>
void take(std::istringstream& line, Values&... values) {
  if (!(line >> ... >> values)) throw std::runtime_error("expected.txt: " + line.str());
}

}  // namespace

ExpectedAnswer readExpected(const std::filesystem::path& file) {
  ExpectedAnswer answer;
  for (const std::string& text : linesOf(readText(file))) {
    std::istringstream line(text);
    std::string quantity;
    line >> quantity;
    if (quantity == "boundary") {
      take(line, answer.boundary[0], answer.boundary[1], answer.boundary[2]);
    } else if (quantity == "free") {
      take(line, answer.freeFreedoms);
    } else if (quantity == "entries") {
      take(line, answer.entries);
    } else if (quantity == "valid") {
      take(line, answer.stressValid);
    } else if (quantity == "cool") {
      take(line, answer.fromCool);
    } else if (quantity == "volume") {
      take(line, answer.volume);
    } else if (quantity == "jacobian") {
      take(line, answer.jacobian);
    } else if (quantity == "stiffness") {
      answer.stiffness.push_back(std::vector<double>(36));
      for (double& value : answer.stiffness.back()) take(line, value);
    } else if (quantity == "expansion") {
      answer.expansion.push_back({});
      take(line, answer.expansion.back()[0], answer.expansion.back()[1]);
    } else if (quantity == "report") {
      answer.report.push_back(text.substr(quantity.size() + 1));
    } else if (quantity == "summary") {
      for (double& value : answer.summary) take(line, value);
    } else if (quantity == "node") {
      int number = 0;
      ExpectedNode node;
      take(line, number, node.total[0], node.total[1], node.total[2], node.inMold[0], node.inMold[1],
           node.inMold[2], node.sinkMark);
      answer.node.push_back(node);
      if (number != answer.node.rows()) throw std::runtime_error("expected.txt: node out of order: " + text);
    } else if (!quantity.empty() && quantity[0] != '#') {
      throw std::runtime_error("expected.txt: unknown quantity " + quantity);
    }
  }
  if (answer.node.empty() || answer.stiffness.rows() != 2 || answer.expansion.rows() != 2 ||
      answer.report.empty()) {
    throw std::runtime_error(file.string() + " lacks quantities");
  }
  return answer;
}

double greatestLength(const ExpectedAnswer& answer) {
  double greatest = 0.0;
  for (const ExpectedNode& node : answer.node) {
    greatest = std::max(greatest, std::hypot(node.total[0], node.total[1], node.total[2]));
  }
  return greatest;
}

}  // namespace keld::testing_support
