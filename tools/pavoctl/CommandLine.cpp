#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <limits>
#include <sstream>

#include "Errors.h"
#include "Names.h"
#include "Text.h"
#include "Values.h"

namespace pavoctl {
namespace {

using Taker = std::function<void(const std::string&)>;

// An option with one value. The value reaches the taker untouched, also an empty one or one that
// begins with a dash; CLI11's own conversions would change some.
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

// The attributes of a profile, the same for every verb that takes them.
void addAttributes(CLI::App& app, pavo::ProfileParams& params) {
  const std::string group = "Attributes";
  const auto add = [&](const std::string& name, const std::string& kind, const std::string& help,
                       auto parse, auto set) {
    addValue(app, name, kind, help, [name, &params, parse, set](const std::string& value) {
      (params.*set)(parse(name, value));
    })->group(group);
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
  add("--auth", "TYPE", "Authentication: " + authTypeNames(), parseAuthType,
      &ProfileParams::setAuthType);
  add("--home-ip", "TYPE", "IP type at home: " + ipTypeNames(), parseIpType,
      &ProfileParams::setHomeIPType);
  add("--roam-ip", "TYPE", "IP type when roaming", parseIpType, &ProfileParams::setRoamIPType);
  add("--types", "NAMES",
      "What the APN is for, joined by , or |: " + apnTypeNames() + "; NONE; or a number",
      parseApnTypes, &ProfileParams::setApnTypesMask);
  add("--class", "CLASS", "The operator's class of the APN: " + apnClassNames() + "; or a number",
      parseApnClass, &ProfileParams::setApnClass);
  add("--clat", "yes|no", "464XLAT: IPv4 for applications over IPv6", parseFlag,
      &ProfileParams::setIsClatEnabled);
  add("--emergency", "yes|no", "The APN may carry emergency calls", parseFlag,
      &ProfileParams::setIsEmergencySupported);
  add("--disabled", "yes|no", "Connections to the APN are forbidden", parseFlag,
      &ProfileParams::setIsApnDisabled);
  add("--max-pdn", "N", "PDN connections allowed in one time block, 0 to 65535", pdnValue,
      &ProfileParams::setMaxPdnsConnPerBlock);
  add("--max-pdn-time", "SECONDS", "That time block, 0 to 65535", pdnValue,
      &ProfileParams::setMaxPdnConnTimer);
  add("--wait", "SECONDS", "Wait between two PDN connection requests, 0 to 65535", pdnValue,
      &ProfileParams::setPdnReqWaitInterval);
}

bool hasAttributes(const CLI::App& app) {
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group() == "Attributes" && option->count() > 0) {
      return true;
    }
  }
  return false;
}

class Parser {
 public:
  Parser() : app("Looks at and changes the modem's packet-data profiles.", "pavoctl") {
    addGlobals();
    addList();
    addGet();
    addAdd();
    addModify();
    addDelete();
    addPlain("refresh", Verb::refresh, "Read all profiles from the modem again",
             "Examples:\n  pavoctl refresh\n");
    addPlain("dump", Verb::dump, "The library's cache and recent log lines",
             "Passwords in the text are masked.\n\nExamples:\n  pavoctl dump\n"
             "  pavoctl dump --json | jq -r '.log[]'\n");
    addPlain("watch", Verb::watch, "Print every change until SIGINT or SIGTERM",
             "One line for each change, whoever makes it: the modem, another client, a restart of\n"
             "the modem.\n\nExamples:\n  pavoctl watch\n"
             "  pavoctl watch --json | jq -c 'select(.event == \"changed\")'\n");
    addImport();
  }

  CommandLine run(int argc, const char* const* argv) {
    try {
      app.parse(argc, argv);
    } catch (const CLI::Success& help) {
      std::ostringstream text;
      app.exit(help, text, text);
      line.help = text.str();
      return line;
    } catch (const CLI::Error& error) {
      throw UsageError(printable(trimmed(error.what())) + " (try pavoctl --help)");
    }
    check();
    return line;
  }

 private:
  CLI::App* addVerb(const std::string& name, Verb verb, const std::string& help,
                    const std::string& examples) {
    CLI::App* added = app.add_subcommand(name, help);
    added->fallthrough();
    added->footer("\n" + examples + "\nGlobal options: see pavoctl --help");
    added->callback([this, verb, added] {
      line.verb = verb;
      verbApp = added;
    });
    return added;
  }

  void addPlain(const std::string& name, Verb verb, const std::string& help,
                const std::string& examples) {
    addVerb(name, verb, help, examples);
  }

  void addGlobals() {
    // At most one. That there is one is checked last, so that a misspelt one is named.
    app.require_subcommand(0, 1);
    app.set_help_all_flag("--help-all", "The help of every command");
    addValue(app, "--subscription", "N", "Subscription to serve (1)", [this](const auto& value) {
      line.session.subscription = static_cast<int>(
          parseNumber("--subscription", value, std::numeric_limits<std::int32_t>::min(),
                      std::numeric_limits<std::int32_t>::max()));
    });
    addValue(app, "--timeout", "SECONDS", "How long to wait for the modem (5)",
             [this](const auto& value) {
               line.session.timeout = std::chrono::milliseconds(parseSeconds("--timeout", value));
             });
    app.add_flag("--json", line.isJson, "Print JSON");
    app.add_flag_callback(
        "--show-secrets", [this] { line.secrets = Secrets::shown; }, "Print passwords in clear");
    app.add_flag("--log", line.session.useAndroidLog,
                 "Send the library's log to the Android log, not to the diagnostic channel");
    app.footer(
        "\nEnvironment:\n"
        "  OVIX_MODEM  the modem's socket. Without it a modem inside this process serves: its\n"
        "              table is empty each time and gone at the end.\n"
        "\nExit status: 0 done, 1 refused by the library or the modem or failed, 2 bad usage.\n"
        "\nA command's own help: pavoctl COMMAND --help");
  }

  void addProfileId(CLI::App* verb) {
    addValue(*verb, "ID", "", "The modem's profile index", [this](const auto& value) {
      line.profileId = static_cast<int>(parseNumber("ID", value, 0, profileIndexMax));
    })->required();
  }

  void addList() {
    CLI::App* list = addVerb(
        "list", Verb::list, "List the profiles, or those that match",
        "An attribute has to be equal unless a criterion loosens it; a profile that lacks it does\n"
        "not match.\n\nExamples:\n  pavoctl list\n  pavoctl list --apn net --apn-subset\n"
        "  pavoctl list --types DEFAULT,SUPL --types-subset --pavo yes\n"
        "  pavoctl list --home-ip V4V6 --home-ip-superset --json\n");
    addAttributes(*list, line.filter);
    addValue(*list, "--id", "ID", "The modem's profile index", [this](const auto& value) {
      line.filter.setFilterByProfileId(
          static_cast<int>(parseNumber("--id", value, 0, profileIndexMax)));
    })->group("Filters");
    addValue(*list, "--pavo", "yes|no", "Created by the library (not looked at beside --ia)",
             [this](const auto& value) {
               line.filter.setFilterByIsPavoProfile(parseFlag("--pavo", value));
             })
        ->group("Filters");
    addValue(
        *list, "--ia", "yes|no", "The library's profile for initial attach",
        [this](const auto& value) { line.filter.setFilterByIsIAProfile(parseFlag("--ia", value)); })
        ->group("Filters");
    struct Criterion {
      const char* name;
      const char* needs;
      pavo::FilterMatchType bit;
      const char* help;
    };
    for (const Criterion& criterion :
         {Criterion{"--apn-subset", "--apn", pavo::ApnNameSubset, "--apn is a part of the name"},
          Criterion{"--types-subset", "--types", pavo::ApnTypeBitmaskSubset,
                    "--types are among the profile's"},
          Criterion{"--home-ip-subset", "--home-ip", pavo::HomeIPSubset,
                    "--home-ip is contained in the profile's"},
          Criterion{"--home-ip-superset", "--home-ip", pavo::HomeIPSuperset,
                    "--home-ip contains the profile's"},
          Criterion{"--roam-ip-subset", "--roam-ip", pavo::RoamIPSubset,
                    "--roam-ip is contained in the profile's"},
          Criterion{"--roam-ip-superset", "--roam-ip", pavo::RoamIPSuperset,
                    "--roam-ip contains the profile's"}}) {
      list->add_flag_callback(
              criterion.name,
              [this, bit = criterion.bit] { line.filter.addFilterMatchCriteria(bit); },
              criterion.help)
          ->needs(list->get_option(criterion.needs))
          ->group("Criteria");
    }
  }

  void addGet() {
    addProfileId(addVerb("get", Verb::get, "Show one profile",
                         "Examples:\n  pavoctl get 3\n  pavoctl get 3 --json --show-secrets\n"));
  }

  void addAdd() {
    CLI::App* add = addVerb(
        "add", Verb::add, "Create a profile",
        "A profile that is not persistent lives as long as the process that made it, so one of\n"
        "--persistent and --hold is needed. Held, it goes on SIGINT, SIGTERM, SIGHUP or the end\n"
        "of standard input when that is a pipe.\n\nExamples:\n"
        "  pavoctl add --apn internet --home-ip V4V6 --types DEFAULT,SUPL --persistent\n"
        "  pavoctl add --apn ims --types IMS --class IMS --hold\n");
    addAttributes(*add, line.attributes);
    CLI::Option* persistent =
        add->add_flag("--persistent", line.isPersistent, "Keep it over a power cycle of the modem");
    add->add_flag("--hold", line.isHeld, "Stay until stopped; the profile is deleted then")
        ->excludes(persistent);
    add->add_flag("--ia", line.isInitialAttach, "It is the profile for initial attach");
  }

  void addModify() {
    CLI::App* modify =
        addVerb("modify", Verb::modify, "Change attributes of a profile",
                "What is not named stays as it is; the modem is only asked for what differs.\n\n"
                "Examples:\n  pavoctl modify 3 --roam-ip V4 --disabled no\n"
                "  pavoctl modify 3 --user me --password secret --auth CHAP\n");
    addProfileId(modify);
    addAttributes(*modify, line.attributes);
  }

  void addDelete() {
    addProfileId(addVerb("delete", Verb::remove, "Delete a profile from the modem",
                         "Whoever uses the profile loses it.\n\nExamples:\n  pavoctl delete 3\n"));
  }

  void addImport() {
    CLI::App* import = addVerb(
        "import", Verb::import, "Create the profiles of one operator from an APN list",
        "The file is in Android's format, <apns><apn mcc= mnc= apn= .../></apns>. Whatever a\n"
        "profile cannot hold is reported by line. Entries that are there already are not added\n"
        "again.\n\nExamples:\n"
        "  pavoctl import /usr/share/mobile-broadband-provider-info/apns-conf.xml --plmn 23402\n"
        "  pavoctl import apns.xml --plmn 26201 --dry-run\n");
    addValue(*import, "FILE", "", "The APN list", [this](const auto& value) {
      line.file = value;
    })->required();
    addValue(*import, "--plmn", "MCCMNC", "The operator: MCC and MNC together",
             [this](const auto& value) { line.plmn = parsePlmn("--plmn", value); })
        ->required();
    CLI::Option* hold = import->add_flag("--hold", line.isHeld,
                                         "Stay until stopped; the profiles are deleted then");
    CLI::Option* temporary = import->add_flag(
        "--non-persistent", isTemporary, "The modem forgets them at a power cycle; needs --hold");
    import
        ->add_flag_callback("--persistent", []{},
                            "Keep them over a power cycle of the modem (the default)")
        ->excludes(temporary);
    hold->needs(temporary);
    import->add_flag("--dry-run", line.isDryRun, "Say what would be done; no modem is asked");
  }

  void check() {
    if (verbApp == nullptr) {
      throw UsageError("no command given (try pavoctl --help)");
    }
    if (line.verb == Verb::add && !line.isPersistent && !line.isHeld) {
      throw UsageError(
          "add: a profile that is not persistent is deleted as soon as pavoctl ends: "
          "give --persistent, or --hold to stay until stopped");
    }
    if (line.verb == Verb::import) {
      line.isPersistent = !isTemporary;
      if (isTemporary && !line.isHeld && !line.isDryRun) {
        throw UsageError(
            "import: profiles that are not persistent are deleted as soon as pavoctl ends: "
            "give --hold too, to stay until stopped");
      }
    }
    if (line.verb == Verb::modify && !hasAttributes(*verbApp)) {
      throw UsageError("modify: nothing to change, name at least one attribute");
    }
  }

  CLI::App app;
  CommandLine line;
  bool isTemporary = false;
  const CLI::App* verbApp = nullptr;
};

}  // namespace

CommandLine CommandLine::parse(int argc, const char* const* argv) {
  return Parser().run(argc, argv);
}

}  // namespace pavoctl
