#pragma once

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

// A table of expected values in a text file: a row a line, cells separated by " | " and trimmed;
// empty lines and lines that begin with "#" are for the reader.
inline std::vector<std::vector<std::string>> readTable(const std::string& path) {
    std::ifstream file(path);
    if (!file)
        throw std::runtime_error("no table " + path);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.starts_with('#'))
            continue;
        std::vector<std::string> row;
        std::istringstream cells(line + "|");
        for (std::string cell; std::getline(cells, cell, '|');) {
            const std::size_t first = cell.find_first_not_of(' ');
            row.push_back(first == std::string::npos
                              ? ""
                              : cell.substr(first, cell.find_last_not_of(' ') + 1 - first));
        }
        rows.push_back(row);
    }
    return rows;
}

// A cell's words, separated by blanks.
inline std::vector<std::string> words(const std::string& cell) {
    std::istringstream stream(cell);
    return {std::istream_iterator<std::string>(stream), {}};
}

inline std::string replaced(std::string text, const std::string& old, const std::string& now) {
    for (std::size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += now.size())
        text.replace(at, old.size(), now);
    return text;
}

// A cell's text with "\\n" and "\\r" in the place of line ends, turned into bytes.
inline std::string unescaped(const std::string& cell) {
    return replaced(replaced(cell, "\\n", "\n"), "\\r", "\r");
}
