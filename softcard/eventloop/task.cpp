// SPDX-License-Identifier: Apache-2.0
//
// Tasks and their handles.

#include "libxorp/task.hh"

#include <algorithm>

// ---- XorpTask -----------------------------------------------------------------------------------

XorpTask::XorpTask() : _node(nullptr) {}

XorpTask::XorpTask(TaskNode* node) : _node(node) {
  if (_node != nullptr) _node->add_ref();
}

XorpTask::XorpTask(const XorpTask& other) : XorpTask(other._node) {}

XorpTask& XorpTask::operator=(const XorpTask& other) {
  XorpTask copy(other);
  std::swap(_node, copy._node);
  return *this;
}

XorpTask::~XorpTask() {
  if (_node != nullptr) _node->release_ref();
}

void XorpTask::schedule(int priority, int weight) { _node->schedule(priority, weight); }
void XorpTask::reschedule() { _node->reschedule(); }

void XorpTask::unschedule() {
  if (_node != nullptr) _node->unschedule();
}

bool XorpTask::scheduled() const { return _node != nullptr && _node->scheduled(); }

// ---- TaskNode -----------------------------------------------------------------------------------

TaskNode::TaskNode(TaskList* list, const OneoffTaskCallback& once,
                   const RepeatedTaskCallback& repeated)
    : _list(list),
      _references(0),
      _priority(XorpTask::PRIORITY_DEFAULT),
      _weight(XorpTask::WEIGHT_DEFAULT),
      _runs_left(0),
      _once(once),
      _repeated(repeated) {}

TaskNode::~TaskNode() { unschedule(); }

void TaskNode::add_ref() { ++_references; }

void TaskNode::release_ref() {
  if (--_references == 0) delete this;
}

void TaskNode::schedule(int priority, int weight) {
  _priority = priority;
  _weight = std::max(weight, 1);
  reschedule();
}

void TaskNode::reschedule() {
  unschedule();
  _position = _list->_queue.insert({_priority, this});
  _runs_left = _weight;
}

void TaskNode::unschedule() {
  if (!scheduled()) return;
  _list->_queue.erase(_position);
  _runs_left = 0;
}

// ---- TaskList -----------------------------------------------------------------------------------

TaskList::TaskList() = default;

TaskList::~TaskList() {
  for (auto& entry : _queue) entry.second->_runs_left = 0;
}

XorpTask TaskList::new_oneoff_task(const OneoffTaskCallback& cb, int priority, int weight) {
  XorpTask task(new TaskNode(this, cb, RepeatedTaskCallback()));
  task.schedule(priority, weight);
  return task;
}

XorpTask TaskList::new_task(const RepeatedTaskCallback& cb, int priority, int weight) {
  XorpTask task(new TaskNode(this, OneoffTaskCallback(), cb));
  task.schedule(priority, weight);
  return task;
}

bool TaskList::run() {
  if (_queue.empty()) return false;
  TaskNode* const node = _queue.begin()->second;
  const XorpTask self(node);  // the callback may let the last handle go
  if (!node->_once.is_empty()) {
    node->unschedule();
    node->_once->dispatch();
  } else if (node->_runs_left == 1) {
    node->reschedule();  // to the end of its equals, before the callback may change its mind
    if (!node->_repeated->dispatch()) node->unschedule();
  } else {
    --node->_runs_left;
    if (!node->_repeated->dispatch()) node->unschedule();
  }
  return true;
}
