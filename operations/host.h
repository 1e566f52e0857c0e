// SPDX-License-Identifier: Apache-2.0
//
// Everything that platform/vorn_*.h asks of a host, as one object. What each function has to do is
// said there, under the name that it has with vorn_, vornsdk_ or is_port_ in front.
#ifndef OPERATIONS_HOST_H_
#define OPERATIONS_HOST_H_

#include <list>

#include "vorn_sdk_base.h"
#include "vornlcapi/types.h"

namespace vorn::operations {

class Host {
 public:
  // ---- vorn_port_mapping.h ----------------------------------------------------------------------

  virtual bool init(int& out) = 0;  // vorn_init_line_card()
  virtual bool is_physical(const Usp& port) = 0;
  virtual bool is_lag(const Usp& port) = 0;
  virtual bool is_vlan(const Usp& port) = 0;
  virtual bool usp_to_mp(const Usp& port, Mp& mp) = 0;
  virtual bool usp_to_mp_list(const Usp& port, std::list<Mp>& mps) = 0;
  virtual bool usp_list_to_mp_list(const std::list<Usp>& ports, std::list<Mp>& mps) = 0;
  virtual bool mp_to_usp(const Mp& mp, Usp& port) = 0;
  virtual bool mp_list_to_usp_list(const std::list<Mp>& mps, std::list<Usp>& ports) = 0;

  // ---- vorn_sdk.h -------------------------------------------------------------------------------

  virtual bool get_instance(VornSdkBase*& sdk) = 0;
  virtual bool create_instance() = 0;
  virtual bool delete_instance(const VornSdkBase* sdk) = 0;
  virtual bool lag_usp_to_lag_id(const Usp& lag, unsigned& id) = 0;
  virtual bool lag_id_to_lag_usp(unsigned id, Usp& lag) = 0;
  virtual bool add_lag_mapping(const Usp& lag, unsigned id) = 0;
  virtual bool delete_lag_mapping(const Usp& lag, unsigned id) = 0;

  // ---- vorn_lag_list.h --------------------------------------------------------------------------

  virtual bool add_lag_to_list(unsigned id, std::list<LagNode>& list) = 0;
  virtual bool delete_lag_from_list(unsigned id, std::list<LagNode>& list) = 0;
  virtual bool is_lag_exist(unsigned id, const std::list<LagNode>& list) = 0;
  virtual bool add_lag_member(unsigned id, std::list<LagNode>& list,
                              const std::list<Mp>& members) = 0;
  virtual bool delete_lag_member(unsigned id, std::list<LagNode>& list,
                                 const std::list<Mp>& members) = 0;
  virtual bool get_lag_member(unsigned id, std::list<Mp>& members) = 0;

 protected:
  ~Host() = default;
};

}  // namespace vorn::operations

#endif  // OPERATIONS_HOST_H_
