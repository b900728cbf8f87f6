# At night under street lamps, one every three seconds: seconds, lux.
0    2
1.0  3
1.4  12
1.6  28
1.8  12
2.2  3
3.0  2
repeat
