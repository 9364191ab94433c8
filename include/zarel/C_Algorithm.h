/**
 * @file C_Algorithm.h
 * The common base of algorithms, with options by name, and of the interfaces to their problems.
 */
#ifndef ZAREL_C_ALGORITHM_H
#define ZAREL_C_ALGORITHM_H

#include <iosfwd>
#include <map>
#include <string>
#include <utility>

#include <zarel/C_Entity.h>
#include <zarel/C_ProgressEngine.h>
#include <zarel/C_ZarelMessage.h>
#include <zarel/export.h>

/**
 * The interface through which an algorithm reaches its problem. The algorithm never sees where the
 * data lie: it calls operations of the object that `C_Algorithm::Run` is given. Each algorithm
 * derives an interface with the operations that it needs.
 *
 * Threads: one object serves one run at a time.
 */
class ZAREL_API C_ItfAlgorithm {
public:
  C_ItfAlgorithm() = default;
  C_ItfAlgorithm(const C_ItfAlgorithm&) = default;
  C_ItfAlgorithm& operator=(const C_ItfAlgorithm&) = default;
  virtual ~C_ItfAlgorithm();

  /** Shows who hears of the progress; null, as at first, for nobody. */
  virtual Zarel::C_ProgressEngine* getProgressEngine();

protected:
  Zarel::C_ProgressEngine* _progress = nullptr; ///< not owned
};

/**
 * An algorithm: a name, and four tables of options, one for each type of value.
 *
 * Options are found by name. There is no list of legal names: what an algorithm does not know it
 * passes over. The type of a value chooses the table, so one name may stand in several. Options
 * stay from one run to the next, copies take them along, and they are not written to files: on
 * disk an algorithm is a C_Entity.
 *
 * Threads: an object belongs to one thread.
 *
 * @code
 * algorithm.setOption("StopCriteria", 2);
 * int rule = algorithm.getOption_i("StopCriteria"); // 2
 * @endcode
 */
class ZAREL_API C_Algorithm : public C_Entity {
public:
  explicit C_Algorithm(std::string const& name);
  C_Algorithm(const C_Algorithm& other);
  C_Algorithm& operator=(const C_Algorithm& other);
  ~C_Algorithm() override;

  using C_Entity::Info;

  /** Tells "C_Algorithm". */
  char const* Type() const override;
  void Info(std::ostream& out) override;
  /** Tells the debug scope of the algorithm's messages; 0 here. */
  virtual Zarel::E_DebugScope_enum GetDebugScope();
  /** Solves the problem behind the interface. Returns 0 for success; does nothing here. */
  virtual int Run(C_ItfAlgorithm& problem);

  /** @name Options
   * Setting an option that stands in the table replaces its value. @{ */
  virtual void setOption(std::string name, std::string value);
  virtual void setOption(std::string name, double value);
  virtual void setOption(std::string name, int value);
  virtual void setOption(std::string name, bool value);
  /** A literal is a text, not a truth value. */
  void setOption(std::string name, char const* value) {
    setOption(std::move(name), std::string(value));
  }
  /** @} */

  /** @name Reading
   * A name that is not in the table enters it with the default of the type (false, 0, 0.0, empty),
   * and that is the value. @{ */
  virtual void getOption(std::string name, std::string& value);
  virtual void getOption(std::string name, double& value);
  virtual void getOption(std::string name, int& value);
  virtual void getOption(std::string name, bool& value);
  /** @} */

  /** @name Asking
   * Tells whether a name stands in the table; enters nothing. @{ */
  virtual bool isOption_b(std::string name);
  virtual bool isOption_i(std::string name);
  virtual bool isOption_d(std::string name);
  virtual bool isOption_s(std::string name);
  /** @} */

  /** @name Reading by result
   * As getOption. @{ */
  virtual bool getOption_b(std::string name);
  virtual int getOption_i(std::string name);
  virtual double getOption_d(std::string name);
  virtual std::string getOption_s(std::string name);
  /** @} */

  /** Appends the name and the options to an active message and sends it. */
  virtual void DisplayConfiguration(Zarel::C_ZarelMessage& message);
  /** Appends the options, table by table, to an active message and sends it. */
  virtual void AffOptions(Zarel::C_ZarelMessage& message);
  /** Sets the options that the algorithm knows; none here. */
  virtual void InitOptions();

  /** @name Tables
   * @{ */
  std::map<std::string, bool>& getbOptions() { return _boolOptions; }
  std::map<std::string, int>& getiOptions() { return _intOptions; }
  std::map<std::string, double>& getdOptions() { return _doubleOptions; }
  std::map<std::string, std::string>& getsOptions() { return _stringOptions; }
  /** @} */

private:
  std::map<std::string, bool> _boolOptions;
  std::map<std::string, int> _intOptions;
  std::map<std::string, double> _doubleOptions;
  std::map<std::string, std::string> _stringOptions;
};

namespace Zarel {
using ::C_Algorithm;
using ::C_ItfAlgorithm;
} // namespace Zarel

#endif
