#include "Widgets/Images/SThrobber.h"

#include <algorithm>
#include <cmath>

void SCircularThrobber::Construct(const FArguments& InArgs)
{
	NumPieces = InArgs._NumPieces;
	Period = InArgs._Period;
	Radius = InArgs._Radius;
}

