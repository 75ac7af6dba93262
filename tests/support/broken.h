#pragma once
// Sets a value until the end of its scope: for tests of checks that must find it wrong.

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
