// Stands in for gnuplot: writes the commands it is given into the file that they name, and ends it as a picture ends.
#include <cstdio>
#include <string>

int main() {
  std::string commands;
  for (int c; (c = std::getchar()) != EOF;) commands += static_cast<char>(c);
  const auto begin = commands.find("set output '");
  if (begin == commands.npos) return 1;
  const auto name = begin + std::string("set output '").size();
  std::FILE* out = std::fopen(commands.substr(name, commands.find('\'', name) - name).c_str(), "wb");
  if (!out) return 1;
  std::fputs((commands + "</svg>").c_str(), out);
  return std::fclose(out) == 0 ? 0 : 1;
}
