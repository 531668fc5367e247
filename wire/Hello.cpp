#include "wire/Hello.h"

namespace wire {

namespace {

// A hello is one byte: bit 0 is sawAbsence, the two bits above are the purpose.
constexpr unsigned purposeShift = 1;
constexpr unsigned helloMax = (static_cast<unsigned>(Purpose::Object) << purposeShift) | 1;

// A welcome is the boot number. A refusal is the boot number and the code.
constexpr size_t numberBytes = 4;

void append(std::vector<uint8_t>& out, uint32_t value) {
  for (size_t i = 0; i < numberBytes; ++i) {
    out.push_back(static_cast<uint8_t>(value >> (8 * i)));
  }
}

uint32_t numberAt(std::span<const uint8_t> bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = 0; i < numberBytes; ++i) {
    value |= uint32_t{bytes[at + i]} << (8 * i);
  }
  return value;
}

}  // namespace

std::string_view purposeName(Purpose purpose) {
  constexpr std::string_view names[] = {"open", "find", "watch", "object"};
  return names[static_cast<size_t>(purpose)];
}

std::vector<uint8_t> encodeHello(Hello hello) {
  const unsigned purpose = static_cast<unsigned>(hello.purpose) << purposeShift;
  return {static_cast<uint8_t>(purpose | (hello.sawAbsence ? 1u : 0u))};
}

std::optional<Hello> decodeHello(std::span<const uint8_t> payload) {
  if (payload.size() != 1 || payload[0] > helloMax) {
    return std::nullopt;
  }
  return Hello{static_cast<Purpose>(payload[0] >> purposeShift), (payload[0] & 1) != 0};
}

std::vector<uint8_t> encodeHelloAnswer(HelloAnswer answer) {
  std::vector<uint8_t> payload;
  append(payload, answer.boot);
  if (answer.refusal != 0) {
    append(payload, static_cast<uint32_t>(answer.refusal));
  }
  return payload;
}

std::optional<HelloAnswer> decodeHelloAnswer(std::span<const uint8_t> payload) {
  if (payload.size() == numberBytes) {
    return HelloAnswer{numberAt(payload, 0), 0};
  }
  if (payload.size() == 2 * numberBytes && numberAt(payload, numberBytes) != 0) {
    return HelloAnswer{numberAt(payload, 0), static_cast<int32_t>(numberAt(payload, numberBytes))};
  }
  return std::nullopt;
}

}  // namespace wire
