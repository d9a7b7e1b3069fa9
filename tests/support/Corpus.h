#pragma once

// The public corpus (../shared/corpus, relative to the repository root where
// the tests run) and the command-line tools the tests compare with.

#include <initializer_list>
#include <string>
#include <vector>

namespace vliptc::test {

inline const std::string kCorpus = "../shared/corpus/";

bool CorpusPresent();

// For a gtest test: skips it when the corpus is missing.
#define VLIPTC_SKIP_WITHOUT_CORPUS()                                                                      \
    if (!::vliptc::test::CorpusPresent())                                                                 \
    GTEST_SKIP() << "the public corpus is not at ../shared/corpus (tests run from the repository root); " \
                    "corpus tests skipped"

// Corpus paths ("jpeg/x.jpg") of the files in the folders, sorted.
std::vector<std::string> CorpusFiles(std::initializer_list<const char*> folders);

// Runs a shell command and returns what it printed (standard output).
std::string RunCommand(const std::string& command, int* status = nullptr);

bool HaveTool(const char* name);

// A path quoted for the shell.
std::string Quote(const std::string& path);

}  // namespace vliptc::test
