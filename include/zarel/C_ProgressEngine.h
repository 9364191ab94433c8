/**
 * @file C_ProgressEngine.h
 * The progress hook of an algorithm.
 */
#ifndef ZAREL_C_PROGRESSENGINE_H
#define ZAREL_C_PROGRESSENGINE_H

#include <zarel/export.h>

namespace Zarel {

/** Hears how far an algorithm is. This base listens to nothing; a host derives from it. */
class ZAREL_API C_ProgressEngine {
public:
  /** How an algorithm counts. The numbers belong to the algorithm and its host. */
  enum E_ProgressType : int {};

  explicit C_ProgressEngine(int id = 0);
  virtual ~C_ProgressEngine();

  /** Stores the end value and the way of counting; the text is not used here. */
  virtual void SetUp(char* text, double end, E_ProgressType type);
  virtual void Update(int step);
  virtual void Update(int step, double value);
  virtual void Finish();
  virtual void checkAbort();

  int GetId() const { return _id; }
  double GetEnd() const { return _end; }
  E_ProgressType GetType() const { return _type; }

private:
  int _id;
  double _end;
  E_ProgressType _type;
};

} // namespace Zarel

#endif
