gcc host.c -I"$S/include" -L"$S/build/release" -lscriberasdk -Wl,-rpath,"$S/build/release" -o host
g++ -fPIC window.cpp $(pkg-config --cflags --libs Qt5Widgets) \
    -I"$S/include" -L"$S/build/release" -lscriberasdk -Wl,-rpath,"$S/build/release" -o window
ln -s "$S/build/release/drivers/simulator/libscriberadrv.so" .
export SCRIBERA_SIM_RECORDING="$S/drivers/simulator/recordings/flowing.rec" SCRIBERA_SIM_KEY=confirm
./host
./window
