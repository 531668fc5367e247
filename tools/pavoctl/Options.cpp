#include "Options.h"

#include <CLI/CLI.hpp>

#include "Names.h"
#include "Values.h"

namespace pavoctl {

CLI::Option* addValue(CLI::App& app, const std::string& name, const std::string& kind,
                      const std::string& help, Taker take) {
  return app
      .add_option(
          name,
          [take = std::move(take)](const CLI::results_t& values) {
            take(values.front());
            return true;
          },
          help)
      ->type_name(kind)
      ->expected(1);
}

void addAttributes(CLI::App& app, pavo::ProfileParams& params) {
  const auto add = [&](const std::string& name, const std::string& kind, const std::string& help,
                       auto parse, auto set) {
    addValue(app, name, kind, help, [name, &params, parse, set](const std::string& value) {
      (params.*set)(parse(name, value));
    })->group("Attributes");
  };
  const auto text = [](std::size_t bytesMax) {
    return [bytesMax](const std::string& name, const std::string& value) {
      return parseText(name, value, bytesMax);
    };
  };
  const auto pdnValue = [](const std::string& name, const std::string& value) {
    return static_cast<int>(parseNumber(name, value, 0, pdnValueMax));
  };
  using pavo::ProfileParams;
  add("--apn", "NAME", "Access point name, up to 150 bytes", text(apnNameBytesMax),
      &ProfileParams::setApnName);
  add("--user", "NAME", "User name, up to 127 bytes", text(userNameBytesMax),
      &ProfileParams::setUserName);
  add("--password", "TEXT", "Password, up to 127 bytes", text(passwordBytesMax),
      &ProfileParams::setPassword);
  add("--auth", kindOf::authType, "Authentication: " + authTypeNames(), parseAuthType,
      &ProfileParams::setAuthType);
  add("--home-ip", kindOf::ipType, "IP type at home: " + ipTypeNames(), parseIpType,
      &ProfileParams::setHomeIPType);
  add("--roam-ip", kindOf::ipType, "IP type when roaming", parseIpType,
      &ProfileParams::setRoamIPType);
  add("--types", kindOf::apnTypes,
      "What the APN is for, joined by , or |: " + apnTypeNames() + "; NONE; or a number",
      parseApnTypes, &ProfileParams::setApnTypesMask);
  add("--class", kindOf::apnClass,
      "The operator's class of the APN: " + apnClassNames() + "; or a number", parseApnClass,
      &ProfileParams::setApnClass);
  add("--clat", kindOf::flag, "464XLAT: IPv4 for applications over IPv6", parseFlag,
      &ProfileParams::setIsClatEnabled);
  add("--emergency", kindOf::flag, "The APN may carry emergency calls", parseFlag,
      &ProfileParams::setIsEmergencySupported);
  add("--disabled", kindOf::flag, "Connections to the APN are forbidden", parseFlag,
      &ProfileParams::setIsApnDisabled);
  add("--max-pdn", "N", "PDN connections allowed in one time block, 0 to 65535", pdnValue,
      &ProfileParams::setMaxPdnsConnPerBlock);
  add("--max-pdn-time", "SECONDS", "That time block, 0 to 65535", pdnValue,
      &ProfileParams::setMaxPdnConnTimer);
  add("--wait", "SECONDS", "Wait between two PDN connection requests, 0 to 65535", pdnValue,
      &ProfileParams::setPdnReqWaitInterval);
}

void addProfileId(CLI::App& app, int& id) {
  addValue(app, "ID", "", "The modem's profile index", [&id](const auto& value) {
    id = static_cast<int>(parseNumber("ID", value, 0, profileIndexMax));
  })->required();
}

}  // namespace pavoctl
