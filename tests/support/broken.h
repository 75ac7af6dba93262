#pragma once
// Sets a variable to a wrong value until the end of the scope, for tests of checks that must report
// it.

template <class T> class Broken {
  public:
    Broken(T &place, T value) : place_(place), kept_(place) { place = value; }
    Broken(Broken const &) = delete;
    Broken &operator=(Broken const &) = delete;
    ~Broken() { place_ = kept_; }

  private:
    T &place_;
    T kept_;
};
