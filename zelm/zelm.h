#pragma once

/// Everything public of ZelmFoundation, but for what needs RxCpp: whoever listens to the stream of an entity
/// includes `<zelm/entities/CompositeSubscriberStream.h>`, and whoever defines entity types of his own
/// `<zelm/entities/ZEntityImpl.h>`.

#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/arrays/ArrayIndexing.h>
#include <zelm/arrays/IndexMapper.h>
#include <zelm/arrays/IndexSet.h>
#include <zelm/arrays/SliceFlattener.h>
#include <zelm/entities/LinkPath.h>
#include <zelm/entities/ZEntity.h>
#include <zelm/entities/ZEntityFactory.h>
#include <zelm/entities/ZEntityInterface.h>
#include <zelm/entities/ZObserverEntity.h>
#include <zelm/entities/ZSingleton.h>
#include <zelm/entities/ZVariableEntity.h>
#include <zelm/errors/ExceptionHandlerBase.h>
#include <zelm/errors/ExceptionReporterBase.h>
#include <zelm/errors/MoreInfoForException.h>
#include <zelm/errors/PrintfExceptionReporterForTesting.h>
#include <zelm/json/JSONFormatter.h>
#include <zelm/text/TextConversions.h>
#include <zelm/text/ZString.h>
#include <zelm/text/ZStringFormatter.h>
#include <zelm/text/ZStringView.h>
#include <zelm/tree/ZDirty.h>
#include <zelm/tree/ZObject.h>
#include <zelm/tree/ZObjectMetadata.h>
#include <zelm/tree/ZObserver.h>
#include <zelm/tree/ZPropertyTree.h>
#include <zelm/units/ZSystemOfUnits.h>
#include <zelm/units/ZUnit.h>
#include <zelm/units/ZUnitDimensions.h>
#include <zelm/units/ZUnitType.h>
#include <zelm/variables/ZVariable.h>
#include <zelm/variant/Comparison.h>
#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/Variant.h>
#include <zelm/variant/VariantElementIterator.h>
#include <zelm/variant/VariantOps.h>
#include <zelm/variant/WellKnownType.h>
