# The records of the benchmarks for capnproto.
@0xd3f1c5b2a9e87461;

using Cxx = import "/capnp/c++.capnp";
$Cxx.namespace("wqd_bench::capnproto");

struct Record {
  number @0 :Int32;
  small @1 :Int16;
  real @2 :Float64;
  price @3 :Int32;
  date @4 :Int32;
  time @5 :Int32;
  text @6 :Text;
  error @7 :Int16;
}
