#include "ApnFile.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "Errors.h"
#include "Text.h"

namespace pavoctl {
namespace {

class Reader {
 public:
  explicit Reader(std::string filePath)
      : path(std::move(filePath)), parser(XML_ParserCreate(/*encoding=*/nullptr), XML_ParserFree) {
    if (!parser) {
      throw Failure(printable(path) + ": out of memory");
    }
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(parser.get(), onStart, onEnd);
    XML_SetCharacterDataHandler(parser.get(), onText);
    XML_SetEntityDeclHandler(parser.get(), onEntity);
  }

  ApnFile read() {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(path.c_str(), "rbe"),
                                                                 std::fclose);
    if (!stream) {
      throw Failure(printable(path) + ": " + std::strerror(errno));
    }
    std::array<char, 65536> chunk;
    bool isEmpty = true;
    bool isLast = false;
    while (!isLast) {
      errno = 0;
      const std::size_t size = std::fread(chunk.data(), 1, chunk.size(), stream.get());
      if (std::ferror(stream.get()) != 0) {
        throw Failure(printable(path) + ": " + std::strerror(errno));
      }
      isEmpty = isEmpty && size == 0;
      if (isEmpty) {
        throw Failure(printable(path) + ": the file is empty");
      }
      isLast = size < chunk.size();
      parse(std::string_view(chunk.data(), size), isLast);
    }
    return std::move(file);
  }

 private:
  void parse(std::string_view text, bool isLast) {
    if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), isLast ? 1 : 0) ==
        XML_STATUS_OK) {
      return;
    }
    if (refusal.empty()) {
      refusal = XML_ErrorString(XML_GetErrorCode(parser.get()));
      refusalLine = line();
    }
    throw Failure(printable(path) + ":" + std::to_string(refusalLine) + ": " + refusal);
  }

  unsigned long line() const { return XML_GetCurrentLineNumber(parser.get()); }

  void refuse(std::string reason) {
    if (refusal.empty()) {
      refusal = std::move(reason);
      refusalLine = line();
      XML_StopParser(parser.get(), /*resumable=*/XML_FALSE);
    }
  }

  void start(const std::string& name, const XML_Char** attributes) {
    ++depth;
    if (depth == 1) {
      if (name != "apns") {
        refuse("the root element is <" + printable(name) + ">, an APN list has <apns>");
      }
      return;
    }
    if (depth > 2 || name != "apn") {
      file.remarks.push_back({line(), "element <" + printable(name) + "> has no meaning here"});
      return;
    }
    ApnEntry& entry = file.entries.emplace_back();
    entry.line = line();
    for (; *attributes != nullptr; attributes += 2) {
      entry.attributes.emplace_back(attributes[0], attributes[1]);
    }
  }

  void text(std::string_view characters) {
    // The parser hands a run of text over in pieces, one for each line at least.
    if (!trimmed(characters).empty() &&
        (file.remarks.empty() || file.remarks.back().line != line())) {
      file.remarks.push_back({line(), "text between the elements has no meaning here"});
    }
  }

  static void onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
    static_cast<Reader*>(self)->start(name, attributes);
  }
  static void onEnd(void* self, const XML_Char*) { --static_cast<Reader*>(self)->depth; }
  static void onText(void* self, const XML_Char* characters, int length) {
    static_cast<Reader*>(self)->text({characters, static_cast<std::size_t>(length)});
  }
  static void onEntity(void* self, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
                       const XML_Char*, const XML_Char*, const XML_Char*) {
    static_cast<Reader*>(self)->refuse("the file declares entities; an APN list has none");
  }

  const std::string path;
  const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser;
  ApnFile file;
  int depth = 0;
  std::string refusal;
  unsigned long refusalLine = 0;
};

}  // namespace

std::string ApnEntry::valueOf(const std::string& name) const {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [&](const auto& attribute) { return attribute.first == name; });
  return found == attributes.end() ? std::string() : found->second;
}

bool ApnEntry::has(const std::string& name) const {
  return std::any_of(attributes.begin(), attributes.end(),
                     [&](const auto& attribute) { return attribute.first == name; });
}

ApnFile readApnFile(const std::string& path) { return Reader(path).read(); }

}  // namespace pavoctl
