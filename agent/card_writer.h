// SPDX-License-Identifier: Apache-2.0
//
// Carries a model out on the card, by the library's entry points: only what differs from the model
// before. What the card refuses is missing from it, is reported, and is tried again next time.
//
// A route that is missing would give its packets to a shorter prefix. So when a route does not fit,
// the routes around it are taken out as well, and Linux routes their packets.
#ifndef AGENT_CARD_WRITER_H_
#define AGENT_CARD_WRITER_H_

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "card_model.h"
#include "vornlcapi/types.h"

namespace agent {

class CardWriter {
 public:
  // `report` takes what the user should know, a line each.
  explicit CardWriter(std::function<void(const std::string&)> report)
      : report_(std::move(report)) {}

  // The address of a front-panel port; all are on the line card that the library tells.
  Usp usp(unsigned port) const { return Usp(unit_, slot_, port); }

  // Empties the card of what others may have left there. `ports` are the ports that the models
  // will have. False when the card does not answer.
  bool begin(unsigned ports);

  // Makes the card do what the model says.
  void apply(const CardModel& model);

  // What the card does.
  const CardModel& card() const { return card_; }

  // How much of the last model the card did not take.
  std::size_t missing() const;

 private:
  // What the card refused of one kind: the first of them in words, and how many.
  struct Refused {
    std::string first;
    std::size_t count = 0;
  };

  void apply_port(unsigned number, const PortModel& model);
  void remove_hosts_and_routes(const CardModel& model);
  void apply_addresses(const CardModel& model);
  void apply_routers(const CardModel& model);
  void apply_hosts(const CardModel& model);
  void apply_routes(const CardModel& model);
  bool check(const char* kind, bool done, const std::string& what);
  void tell();

  bool add(const Ip& ip, const Hop& hop) const;
  bool remove(const Ip& ip, const Hop& hop) const;
  bool add(const Prefix& prefix, const Hop& hop) const;
  bool remove(const Prefix& prefix, const Hop& hop) const;

  std::function<void(const std::string&)> report_;
  unsigned unit_ = 0;
  unsigned slot_ = 0;
  CardModel card_;
  std::map<std::string, Refused> refused_;  // by kind
  std::map<std::string, Refused> told_;
};

}  // namespace agent

#endif  // AGENT_CARD_WRITER_H_
