// The parser of arguments by name, for headers: to read it takes long, and few sources call it.
#pragma once

namespace CLI {
class App;
class Option;
class ParseError;
class Validator;
} // namespace CLI
