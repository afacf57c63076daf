#pragma once

#include <exception>
#include <stdexcept>
#include <string>

/// The work couldn't be done. The text is for the person at the keyboard; the program ends with code 1.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The arguments make no sense together. The program ends with code 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Something failed and was told already. The program ends with code 1.
class ToldFailure : public std::exception {};

/// Tells the person at the keyboard, on the standard error output.
void printError(const std::string& message);

/// The text of the exception being handled, of whatever class. Only to be called in a handler.
std::string getCurrentMessage();

/// The failure of the exception being handled, naming `path` unless its text does so already. Only in a handler.
Failure makeFailureOf(const std::string& path);
