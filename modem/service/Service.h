// The modem at work: takes up what clients say, lets the modem handle it, and lets the faults that
// it was told of befall what comes and goes. Serves the control channel.
//
//   request ── fault of the request? ──► Modem ──► answer ───── fault of the answer? ──► Outbox
//                                          └─────► indications ─ faults of theirs? ────► Outbox
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "modem/core/Modem.h"
#include "modem/faults/Faults.h"
#include "modem/server/ClientHandler.h"
#include "modem/service/Control.h"
#include "modem/service/Outbox.h"
#include "modem/trace/Recorder.h"

namespace modem {

class Service final : public ClientHandler, private ControlHost {
 public:
  struct Options {
    Modem::Options modem = {};
    bool canQuit = false;  // whether the control verb quit ends the server's run
    FaultScript script = {};
    std::unique_ptr<TraceWriter> trace = nullptr;  // null: none is wanted
  };

  // Throws FileError when the store cannot be used.
  Service(Options options, ClientLink& link);

  void onHello(ClientNumber client, Hello hello) override;
  void onRequest(ClientNumber client, const Frame& request) override;
  void onEnd(ClientNumber client, Ender ender) override;
  nlohmann::json onControl(std::string_view request) override;

 private:
  using MaybeEffect = std::optional<Effect>;

  // ControlHost.
  void deliver(const std::vector<Indication>& indications) override;
  void powerCycle(const PowerCycle& cycle) override;
  void releaseHeldBack() override { outbox.release(); }
  bool canQuit() const override { return quitAllowed; }
  void quit() override { link.stop(); }

  void welcome(ClientNumber client, Hello hello);
  void answerHello(ClientNumber client, int32_t refusal, const std::string& fault = {});
  void meet(ClientNumber client, const Frame& request, const Effect& effect);
  void carryOut(ClientNumber client, const Frame& request, const MaybeEffect& effect = {});
  void answer(ClientNumber client, const Frame& request, std::vector<uint8_t> payload,
              const MaybeEffect& effect);
  void losePowerAround(ClientNumber client, const Frame& request, const LosePower& power);
  std::vector<Outgoing> underFaults(const std::vector<Indication>& indications);
  void sendIndication(const Outgoing& outgoing);
  // As powerCycle, for those who cannot be told that the store is unreadable.
  void losePower(const PowerCycle& cycle);
  void returnPower(PowerCycle cycle);

  ClientLink& link;
  Modem modem;
  Faults faults;
  Recorder recorder;
  Outbox outbox;
  Control control;
  const bool quitAllowed;
};

}  // namespace modem
