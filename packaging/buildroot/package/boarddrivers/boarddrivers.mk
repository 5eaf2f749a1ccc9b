################################################################################
#
# boarddrivers
#
################################################################################

# The source tree that contains this folder.
BOARDDRIVERS_VERSION = 1.0.0
BOARDDRIVERS_SITE = $(realpath $(BR2_EXTERNAL_BOARDDRIVERS_PATH)/../..)
BOARDDRIVERS_SITE_METHOD = local
BOARDDRIVERS_LICENSE = not granted yet
BOARDDRIVERS_LICENSE_FILES = packaging/copyright
BOARDDRIVERS_INSTALL_STAGING = YES
BOARDDRIVERS_CONF_OPTS = -DBOARD_TESTS=OFF -DBOARD_PACKAGES=OFF

ifeq ($(BR2_PACKAGE_BOARDDRIVERS_BOARDCTL),y)
BOARDDRIVERS_DEPENDENCIES += cli11 json-for-modern-cpp tomlplusplus
BOARDDRIVERS_CONF_OPTS += -DBOARD_TOOLS=ON
else
BOARDDRIVERS_CONF_OPTS += -DBOARD_TOOLS=OFF
endif

ifeq ($(BR2_PACKAGE_BOARDDRIVERS_BOARDWEB),y)
BOARDDRIVERS_DEPENDENCIES += libmicrohttpd
BOARDDRIVERS_CONF_OPTS += -DBOARDWEB=ON
else
BOARDDRIVERS_CONF_OPTS += -DBOARDWEB=OFF
endif

$(eval $(cmake-package))
