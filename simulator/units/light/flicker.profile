# A failing lamp that goes to half its light several times a second: seconds, lux.
0     160
0.13  160
0.13  80
0.21  80
0.21  160
0.37  160
0.37  80
0.43  80
0.43  160
0.61  160
repeat
