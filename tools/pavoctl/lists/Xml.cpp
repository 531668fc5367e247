// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "lists/Xml.h"

#include "Errors.h"
#include "Text.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

namespace pavoctl {
namespace {

constexpr std::size_t fileBytesMax = std::size_t{16} << 20;
constexpr std::size_t depthMax = 32;

// Returns whether a piece of markup refers to an entity that XML does not define itself. Bytes of 0
// are skipped, so that it finds them in UTF-16 too.
bool hasForeignReference(std::string_view markup) {
  std::string text(markup);
  text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
  for (auto at = text.find('&'); at != std::string::npos; at = text.find('&', at + 1)) {
    constexpr std::array<std::string_view, 6> own{"&#",   "&amp;",  "&lt;",
                                                  "&gt;", "&quot;", "&apos;"};
    if (std::none_of(own.begin(), own.end(), [&](std::string_view known) {
          return text.compare(at, known.size(), known) == 0;
        })) {
      return true;
    }
  }
  return false;
}

class Reader {
 public:
  Reader(std::string filePath, const std::vector<std::string>& wantedRoots)
      : path(std::move(filePath)),
        rootNames(wantedRoots),
        parser(XML_ParserCreate(/*encoding=*/nullptr), XML_ParserFree) {
    if (!parser) {
      throw Failure(printable(path) + ": out of memory");
    }
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(parser.get(), onStart, onEnd);
    XML_SetCharacterDataHandler(parser.get(), onText);
    XML_SetEntityDeclHandler(parser.get(), onEntity);
    XML_SetAttlistDeclHandler(parser.get(), onAttlist);
    XML_SetSkippedEntityHandler(parser.get(), onSkippedEntity);
  }

  XmlElement read() {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(path.c_str(), "rbe"),
                                                                 std::fclose);
    if (!stream) {
      throw Failure(printable(path) + ": " + std::strerror(errno));
    }
    std::array<char, 65536> chunk;
    std::size_t bytes = 0;
    bool isLast = false;
    while (!isLast) {
      errno = 0;
      const std::size_t size = std::fread(chunk.data(), 1, chunk.size(), stream.get());
      if (std::ferror(stream.get()) != 0) {
        throw Failure(printable(path) + ": " + std::strerror(errno));
      }
      bytes += size;
      if (bytes == 0) {
        throw Failure(printable(path) + ": the file is empty");
      }
      if (bytes > fileBytesMax) {
        throw Failure(printable(path) + ": larger than 16 MiB, that is no APN list");
      }
      isLast = size < chunk.size();
      parse(std::string_view(chunk.data(), size), isLast);
    }
    return std::move(root);
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

  // In a document with an outer document type the parser silently leaves unknown references out of
  // attributes.
  void refuseForeignReferences() {
    int offset = 0;
    int size = 0;
    const char* context = XML_GetInputContext(parser.get(), &offset, &size);
    const int count = XML_GetCurrentByteCount(parser.get());
    if (context != nullptr && count > 0 &&
        hasForeignReference({context + offset, static_cast<std::size_t>(count)})) {
      refuse("undefined entity");
    }
  }

  void start(const XML_Char* name, const XML_Char** attributes) {
    refuseForeignReferences();
    if (open.empty() && std::find(rootNames.begin(), rootNames.end(), name) == rootNames.end()) {
      refuse("the root element is <" + printable(name) + ">, an APN list has <" +
             join(rootNames, "> or <") + ">");
    }
    if (open.size() == depthMax) {
      refuse("elements nested too deep");
    }
    // The reader ignores the rest of the file after a refusal.
    if (!refusal.empty()) {
      return;
    }
    XmlElement& element = open.empty() ? root : open.back()->children.emplace_back();
    open.push_back(&element);
    element.name = name;
    element.line = line();
    for (; *attributes != nullptr; attributes += 2) {
      element.attributes.emplace_back(attributes[0], attributes[1]);
    }
  }

  void end() {
    if (refusal.empty()) {
      open.pop_back();
    }
  }

  void text(std::string_view characters) {
    if (!refusal.empty()) {
      return;
    }
    XmlElement& element = *open.back();
    element.text += characters;
    // The parser hands over a run of text in pieces, with one for each line at least.
    if (element.textLine == 0 && !trimmed(characters).empty()) {
      element.textLine = line();
    }
  }

  static Reader& of(void* self) { return *static_cast<Reader*>(self); }
  static void onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
    of(self).start(name, attributes);
  }
  static void onEnd(void* self, const XML_Char*) { of(self).end(); }
  static void onText(void* self, const XML_Char* characters, int length) {
    of(self).text({characters, static_cast<std::size_t>(length)});
  }
  static void onEntity(void* self, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
                       const XML_Char*, const XML_Char*, const XML_Char*) {
    of(self).refuse("the file declares entities; an APN list has none");
  }
  static void onAttlist(void* self, const XML_Char*, const XML_Char*, const XML_Char*,
                        const XML_Char*, int) {
    of(self).refuse("the file declares attributes; an APN list has no need to");
  }
  static void onSkippedEntity(void* self, const XML_Char*, int) {
    of(self).refuse("undefined entity");
  }

  const std::string path;
  const std::vector<std::string>& rootNames;
  const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser;
  XmlElement root;
  // The elements that have begun and not ended. Only the last one gets children, so none of them
  // moves.
  std::vector<XmlElement*> open;
  std::string refusal;
  unsigned long refusalLine = 0;
};

}  // namespace

const std::string* XmlElement::attribute(const std::string& attributeName) const {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [&](const auto& pair) { return pair.first == attributeName; });
  return found == attributes.end() ? nullptr : &found->second;
}

const XmlElement* XmlElement::child(const std::string& childName) const {
  const auto found = std::find_if(children.begin(), children.end(), [&](const XmlElement& element) {
    return element.name == childName;
  });
  return found == children.end() ? nullptr : &*found;
}

XmlElement readXml(const std::string& path, const std::vector<std::string>& rootNames) {
  return Reader(path, rootNames).read();
}

}  // namespace pavoctl
