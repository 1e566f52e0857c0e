// SPDX-License-Identifier: Apache-2.0
//
// Callback objects: XorpCallbackN<R, A1..AN> is the abstract type of a function object with N
// arguments, and callback() makes one from a function or from an object and a member function.
//
// A file that includes this header names nothing of its own `callback`: XORP can be built so
// that the word is a macro.

#ifndef LIBXORP_CALLBACK_HH_
#define LIBXORP_CALLBACK_HH_

#include <tuple>
#include <type_traits>

#include "libxorp/ref_ptr.hh"
#include "libxorp/safe_callback_obj.hh"

// ---- The abstract types, 0 to 15 arguments ------------------------------------------------------

// Held and passed as RefPtr. The virtual functions stay in this order.
template <class R>
struct XorpCallback0 {
  typedef ref_ptr<XorpCallback0> RefPtr;
  virtual ~XorpCallback0() {}
  virtual R dispatch() = 0;
};

template <class R, class A1>
struct XorpCallback1 {
  typedef ref_ptr<XorpCallback1> RefPtr;
  virtual ~XorpCallback1() {}
  virtual R dispatch(A1) = 0;
};

template <class R, class A1, class A2>
struct XorpCallback2 {
  typedef ref_ptr<XorpCallback2> RefPtr;
  virtual ~XorpCallback2() {}
  virtual R dispatch(A1, A2) = 0;
};

template <class R, class A1, class A2, class A3>
struct XorpCallback3 {
  typedef ref_ptr<XorpCallback3> RefPtr;
  virtual ~XorpCallback3() {}
  virtual R dispatch(A1, A2, A3) = 0;
};

template <class R, class A1, class A2, class A3, class A4>
struct XorpCallback4 {
  typedef ref_ptr<XorpCallback4> RefPtr;
  virtual ~XorpCallback4() {}
  virtual R dispatch(A1, A2, A3, A4) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5>
struct XorpCallback5 {
  typedef ref_ptr<XorpCallback5> RefPtr;
  virtual ~XorpCallback5() {}
  virtual R dispatch(A1, A2, A3, A4, A5) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5, class A6>
struct XorpCallback6 {
  typedef ref_ptr<XorpCallback6> RefPtr;
  virtual ~XorpCallback6() {}
  virtual R dispatch(A1, A2, A3, A4, A5, A6) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7>
struct XorpCallback7 {
  typedef ref_ptr<XorpCallback7> RefPtr;
  virtual ~XorpCallback7() {}
  virtual R dispatch(A1, A2, A3, A4, A5, A6, A7) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8>
struct XorpCallback8 {
  typedef ref_ptr<XorpCallback8> RefPtr;
  virtual ~XorpCallback8() {}
  virtual R dispatch(A1, A2, A3, A4, A5, A6, A7, A8) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9>
struct XorpCallback9 {
  typedef ref_ptr<XorpCallback9> RefPtr;
  virtual ~XorpCallback9() {}
  virtual R dispatch(A1, A2, A3, A4, A5, A6, A7, A8, A9) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10>
struct XorpCallback10 {
  typedef ref_ptr<XorpCallback10> RefPtr;
  virtual ~XorpCallback10() {}
  virtual R dispatch(A1, A2, A3, A4, A5, A6, A7, A8, A9, A10) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10, class A11>
struct XorpCallback11 {
  typedef ref_ptr<XorpCallback11> RefPtr;
  virtual ~XorpCallback11() {}
  virtual R dispatch(A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10, class A11, class A12>
struct XorpCallback12 {
  typedef ref_ptr<XorpCallback12> RefPtr;
  virtual ~XorpCallback12() {}
  virtual R dispatch(A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10, class A11, class A12, class A13>
struct XorpCallback13 {
  typedef ref_ptr<XorpCallback13> RefPtr;
  virtual ~XorpCallback13() {}
  virtual R dispatch(A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12, A13) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10, class A11, class A12, class A13, class A14>
struct XorpCallback14 {
  typedef ref_ptr<XorpCallback14> RefPtr;
  virtual ~XorpCallback14() {}
  virtual R dispatch(A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12, A13, A14) = 0;
};

template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10, class A11, class A12, class A13, class A14, class A15>
struct XorpCallback15 {
  typedef ref_ptr<XorpCallback15> RefPtr;
  virtual ~XorpCallback15() {}
  virtual R dispatch(A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12, A13, A14, A15) = 0;
};

// ---- What callback() makes ----------------------------------------------------------------------

namespace xorp_callback {

template <class... T>
struct types {};

// The abstract callback type for a list of arguments.
template <class R, class Args>
struct abstract;
template <class R>
struct abstract<R, types<>> {
  typedef XorpCallback0<R> type;
};
template <class R, class A1>
struct abstract<R, types<A1>> {
  typedef XorpCallback1<R, A1> type;
};
template <class R, class A1, class A2>
struct abstract<R, types<A1, A2>> {
  typedef XorpCallback2<R, A1, A2> type;
};
template <class R, class A1, class A2, class A3>
struct abstract<R, types<A1, A2, A3>> {
  typedef XorpCallback3<R, A1, A2, A3> type;
};
template <class R, class A1, class A2, class A3, class A4>
struct abstract<R, types<A1, A2, A3, A4>> {
  typedef XorpCallback4<R, A1, A2, A3, A4> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5>
struct abstract<R, types<A1, A2, A3, A4, A5>> {
  typedef XorpCallback5<R, A1, A2, A3, A4, A5> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5, class A6>
struct abstract<R, types<A1, A2, A3, A4, A5, A6>> {
  typedef XorpCallback6<R, A1, A2, A3, A4, A5, A6> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7>
struct abstract<R, types<A1, A2, A3, A4, A5, A6, A7>> {
  typedef XorpCallback7<R, A1, A2, A3, A4, A5, A6, A7> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8>
struct abstract<R, types<A1, A2, A3, A4, A5, A6, A7, A8>> {
  typedef XorpCallback8<R, A1, A2, A3, A4, A5, A6, A7, A8> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9>
struct abstract<R, types<A1, A2, A3, A4, A5, A6, A7, A8, A9>> {
  typedef XorpCallback9<R, A1, A2, A3, A4, A5, A6, A7, A8, A9> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10>
struct abstract<R, types<A1, A2, A3, A4, A5, A6, A7, A8, A9, A10>> {
  typedef XorpCallback10<R, A1, A2, A3, A4, A5, A6, A7, A8, A9, A10> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10, class A11>
struct abstract<R, types<A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11>> {
  typedef XorpCallback11<R, A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10, class A11, class A12>
struct abstract<R, types<A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12>> {
  typedef XorpCallback12<R, A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10, class A11, class A12, class A13>
struct abstract<R, types<A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12, A13>> {
  typedef XorpCallback13<R, A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12, A13> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10, class A11, class A12, class A13, class A14>
struct abstract<R, types<A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12, A13, A14>> {
  typedef XorpCallback14<R, A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12, A13, A14> type;
};
template <class R, class A1, class A2, class A3, class A4, class A5, class A6, class A7, class A8,
          class A9, class A10, class A11, class A12, class A13, class A14, class A15>
struct abstract<R, types<A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12, A13, A14, A15>> {
  typedef XorpCallback15<R, A1, A2, A3, A4, A5, A6, A7, A8, A9, A10, A11, A12, A13, A14, A15> type;
};

// Splits a parameter list after its first `N`: those are given at dispatch, the rest is bound.
template <size_t N, class Head, class Tail>
struct split;
template <class... H, class... T>
struct split<0, types<H...>, types<T...>> {
  typedef types<H...> given;
  typedef types<T...> bound;
};
template <size_t N, class... H, class T1, class... T>
struct split<N, types<H...>, types<T1, T...>> : split<N - 1, types<H..., T1>, types<T...>> {};
// Where both of the above match, nothing is left to take.
template <class... H, class T1, class... T>
struct split<0, types<H...>, types<T1, T...>> {
  typedef types<H...> given;
  typedef types<T1, T...> bound;
};

template <size_t... I>
struct indices {};
template <size_t N, size_t... I>
struct make_indices : make_indices<N - 1, N - 1, I...> {};
template <size_t... I>
struct make_indices<0, I...> {
  typedef indices<I...> type;
};

template <class R, class F>
struct function_target {
  F _f;
  template <class... X>
  R call(X&&... x) {
    return (*_f)(std::forward<X>(x)...);
  }
};

// Holds a plain pointer and does not know when the object dies.
template <class R, class O, class M>
struct member_target {
  O* _o;
  M _m;
  template <class... X>
  R call(X&&... x) {
    return (_o->*_m)(std::forward<X>(x)...);
  }
};

// Knows when the object dies, and does nothing from then on.
template <class R, class O, class M>
struct safe_member_target {
  O* _o;
  M _m;
  ref_ptr<bool> _alive;
  template <class... X>
  R call(X&&... x) {
    if (!*_alive) return R();
    return (_o->*_m)(std::forward<X>(x)...);
  }
};

// The callback itself. The target and the bound values are bases so that an empty list of bound
// values takes no room.
template <class R, class Target, class Given, class Bound>
struct concrete;
template <class R, class Target, class... A, class... B>
struct concrete<R, Target, types<A...>, types<B...>> final
    : abstract<R, types<A...>>::type,
      private Target,
      private std::tuple<typename std::decay<B>::type...> {
  typedef std::tuple<typename std::decay<B>::type...> Values;

  concrete(const Target& target, const Values& values) : Target(target), Values(values) {}

  R dispatch(A... given) override {
    return apply(typename make_indices<sizeof...(B)>::type(), std::forward<A>(given)...);
  }

 private:
  template <size_t... I, class... X>
  R apply(indices<I...>, X&&... given) {
    return Target::call(std::forward<X>(given)..., std::get<I>(static_cast<Values&>(*this))...);
  }
};

// Makes the callback for a target whose parameters are P, the last of them bound to `values`.
template <class R, class Params, class... V>
struct maker;
template <class R, class... P, class... V>
struct maker<R, types<P...>, V...> {
  static_assert(sizeof...(V) <= sizeof...(P), "more bound values than the function has parameters");
  typedef split<sizeof...(P) - sizeof...(V), types<>, types<P...>> parts;
  typedef typename abstract<R, typename parts::given>::type Abstract;
  typedef typename Abstract::RefPtr RefPtr;

  template <class Target>
  static RefPtr make(const Target& target, const V&... values) {
    typedef concrete<R, Target, typename parts::given, typename parts::bound> Concrete;
    return RefPtr(new Concrete(target, typename Concrete::Values(values...)));
  }

  template <class O, class M>
  static RefPtr make_member(std::false_type, O* o, M m, const V&... values) {
    const member_target<R, O, M> target = {o, m};
    return make(target, values...);
  }
  template <class O, class M>
  static RefPtr make_member(std::true_type, O* o, M m, const V&... values) {
    const safe_member_target<R, O, M> target = {o, m, o->alive()};
    return make(target, values...);
  }
};

template <class O>
struct is_safe : std::is_convertible<O*, const CallbackSafeObject*>::type {};

}  // namespace xorp_callback

// ---- callback() ---------------------------------------------------------------------------------

// Each form takes up to six further values, bound to the last parameters of the function: at
// dispatch the arguments given there come first, the bound ones after. Bound values are copied
// into the callback. Except for a CallbackSafeObject, the object must outlive the callback.

template <class R, class... P, class... V>
typename xorp_callback::maker<R, xorp_callback::types<P...>, V...>::RefPtr callback(R (*f)(P...),
                                                                                    V... values) {
  const xorp_callback::function_target<R, R (*)(P...)> target = {f};
  return xorp_callback::maker<R, xorp_callback::types<P...>, V...>::make(target, values...);
}

template <class R, class O, class... P, class... V>
typename xorp_callback::maker<R, xorp_callback::types<P...>, V...>::RefPtr callback(O* o,
                                                                                    R (O::*m)(P...),
                                                                                    V... values) {
  return xorp_callback::maker<R, xorp_callback::types<P...>, V...>::make_member(
      typename xorp_callback::is_safe<O>::type(), o, m, values...);
}

template <class R, class O, class... P, class... V>
typename xorp_callback::maker<R, xorp_callback::types<P...>, V...>::RefPtr callback(O* o,
                                                                                    R (O::*m)(P...)
                                                                                        const,
                                                                                    V... values) {
  return xorp_callback::maker<R, xorp_callback::types<P...>, V...>::make_member(
      typename xorp_callback::is_safe<O>::type(), o, m, values...);
}

template <class R, class O, class... P, class... V>
typename xorp_callback::maker<R, xorp_callback::types<P...>, V...>::RefPtr callback(const O* o,
                                                                                    R (O::*m)(P...)
                                                                                        const,
                                                                                    V... values) {
  return xorp_callback::maker<R, xorp_callback::types<P...>, V...>::make_member(
      typename xorp_callback::is_safe<const O>::type(), o, m, values...);
}

template <class R, class O, class... P, class... V>
typename xorp_callback::maker<R, xorp_callback::types<P...>, V...>::RefPtr callback(O& o,
                                                                                    R (O::*m)(P...),
                                                                                    V... values) {
  return xorp_callback::maker<R, xorp_callback::types<P...>, V...>::make_member(
      typename xorp_callback::is_safe<O>::type(), &o, m, values...);
}

template <class R, class O, class... P, class... V>
typename xorp_callback::maker<R, xorp_callback::types<P...>, V...>::RefPtr callback(O& o,
                                                                                    R (O::*m)(P...)
                                                                                        const,
                                                                                    V... values) {
  return xorp_callback::maker<R, xorp_callback::types<P...>, V...>::make_member(
      typename xorp_callback::is_safe<O>::type(), &o, m, values...);
}

template <class R, class O, class... P, class... V>
typename xorp_callback::maker<R, xorp_callback::types<P...>, V...>::RefPtr callback(const O& o,
                                                                                    R (O::*m)(P...)
                                                                                        const,
                                                                                    V... values) {
  return xorp_callback::maker<R, xorp_callback::types<P...>, V...>::make_member(
      typename xorp_callback::is_safe<const O>::type(), &o, m, values...);
}

#endif  // LIBXORP_CALLBACK_HH_
