# discovery tests
