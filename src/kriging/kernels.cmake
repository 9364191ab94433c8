# The correlation kernels are compiled once for each instruction set; the right table is chosen at
# run time. No contraction, so that all of them give the figures of the scalar formula, which is why
# that file is compiled without it too.
set(kriging_kernels Correlation.cpp CorrelationKernelsBaseline.cpp)
set(common -ffp-contract=off -fno-math-errno)
set_source_files_properties(Correlation.cpp CorrelationKernelsBaseline.cpp
  TARGET_DIRECTORY zarel_objects PROPERTIES COMPILE_OPTIONS "${common}")
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  list(APPEND kriging_kernels CorrelationKernelsAvx2.cpp CorrelationKernelsAvx512.cpp)
  set_source_files_properties(CorrelationKernelsAvx2.cpp
    TARGET_DIRECTORY zarel_objects PROPERTIES COMPILE_OPTIONS "${common};-mavx2;-mfma")
  set_source_files_properties(CorrelationKernelsAvx512.cpp
    TARGET_DIRECTORY zarel_objects PROPERTIES
    COMPILE_OPTIONS "${common};-mavx2;-mfma;-mavx512f;-mprefer-vector-width=512")
endif()
