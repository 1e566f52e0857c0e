// SPDX-License-Identifier: Apache-2.0
//
// XorpTask: work that the event loop does piece by piece between timers and descriptors.

#ifndef LIBXORP_TASK_HH_
#define LIBXORP_TASK_HH_

#include "libxorp/callback.hh"

class TaskList;
class TaskNode;

typedef XorpCallback0<void>::RefPtr OneoffTaskCallback;

// Returns true to be called again.
typedef XorpCallback0<bool>::RefPtr RepeatedTaskCallback;

// A handle on a task; copies share the task. The task runs only while some handle refers to it.
class XorpTask {
 public:
  // Lower is more urgent. Values only: they have no definition to bind a reference to.
  static const int PRIORITY_HIGHEST = 0;
  static const int PRIORITY_XRL_KEEPALIVE = 1;
  static const int PRIORITY_HIGH = 2;
  static const int PRIORITY_DEFAULT = 4;
  static const int PRIORITY_BACKGROUND = 7;
  static const int PRIORITY_LOWEST = 9;
  static const int PRIORITY_INFINITY = 255;

  static const int WEIGHT_DEFAULT = 1;

  XorpTask();
  explicit XorpTask(TaskNode* node);
  XorpTask(const XorpTask& other);
  XorpTask& operator=(const XorpTask& other);
  ~XorpTask();

  // Puts the task in the loop, behind those of the same priority. A task with a higher weight
  // gets as many runs more in each turn among its equals.
  void schedule(int priority, int weight);

  // The same with the priority and weight it had.
  void reschedule();

  void unschedule();
  bool scheduled() const;

 private:
  TaskNode* _node;
};

// One task. Owned by its handles.
class TaskNode {
 public:
  TaskNode(TaskList* list, const OneoffTaskCallback& once, const RepeatedTaskCallback& repeated);
  ~TaskNode();

  void add_ref();
  void release_ref();

  void schedule(int priority, int weight);
  void reschedule();
  void unschedule();
  bool scheduled() const { return _runs_left > 0; }

 private:
  friend class TaskList;
  typedef std::multimap<int, TaskNode*>::iterator Position;

  TaskNode(const TaskNode&);
  TaskNode& operator=(const TaskNode&);

  TaskList* _list;
  Position _position;  // meaningful while scheduled
  int _references;
  int _priority;
  long _weight;     // 1 or more
  long _runs_left;  // in this turn; 0 while not scheduled
  OneoffTaskCallback _once;
  RepeatedTaskCallback _repeated;
};

// The tasks of one loop, most urgent first. Internal to the loop.
class TaskList : private NONCOPYABLE {
 public:
  TaskList();

  // Handles may outlive the list; their tasks are then no longer scheduled.
  ~TaskList();

  XorpTask new_oneoff_task(const OneoffTaskCallback& cb, int priority, int weight);
  XorpTask new_task(const RepeatedTaskCallback& cb, int priority, int weight);

  bool empty() const { return _queue.empty(); }

  // Runs the most urgent task once; false if there was none.
  bool run();

 private:
  friend class TaskNode;
  std::multimap<int, TaskNode*> _queue;
};

#endif  // LIBXORP_TASK_HH_
